#pragma once

#include <iosfwd>
#include <string>

#include "numeric/glmm/GLMMConst.h"

// Debug lines for the enumerations of the mixed model component, in the form
// of MCDisplay_850::DisplayC.
namespace GLMMComponentDisplay_850 {

void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::CovarType value);
void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::ThetaEstType value);
void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::DegreesFreedomType value);
void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::ScoreType value);
void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::LMatrixRowType value);
void DisplayC(const std::string& label, GLMMConst_850::CovarType value);
void DisplayC(const std::string& label, GLMMConst_850::ThetaEstType value);
void DisplayC(const std::string& label, GLMMConst_850::DegreesFreedomType value);
void DisplayC(const std::string& label, GLMMConst_850::ScoreType value);
void DisplayC(const std::string& label, GLMMConst_850::LMatrixRowType value);

}  // namespace GLMMComponentDisplay_850
