#include "numeric/glmm/GLMMComponentDisplay.h"

#include "numeric/display/MCDisplay.h"

namespace GLMMComponentDisplay_850 {

void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::CovarType value) {
  MCDisplay_850::DisplayEnum(os, label, GLMMConst_850::GetName(value), static_cast<long>(value));
}

void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::ThetaEstType value) {
  MCDisplay_850::DisplayEnum(os, label, GLMMConst_850::GetName(value), static_cast<long>(value));
}

void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::DegreesFreedomType value) {
  MCDisplay_850::DisplayEnum(os, label, GLMMConst_850::GetName(value), static_cast<long>(value));
}

void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::ScoreType value) {
  MCDisplay_850::DisplayEnum(os, label, GLMMConst_850::GetName(value), static_cast<long>(value));
}

void DisplayC(std::ostream& os, const std::string& label, GLMMConst_850::LMatrixRowType value) {
  MCDisplay_850::DisplayEnum(os, label, GLMMConst_850::GetName(value), static_cast<long>(value));
}

void DisplayC(const std::string& label, GLMMConst_850::CovarType value) {
  DisplayC(*MCDisplay_850::GetOutStream(), label, value);
}

void DisplayC(const std::string& label, GLMMConst_850::ThetaEstType value) {
  DisplayC(*MCDisplay_850::GetOutStream(), label, value);
}

void DisplayC(const std::string& label, GLMMConst_850::DegreesFreedomType value) {
  DisplayC(*MCDisplay_850::GetOutStream(), label, value);
}

void DisplayC(const std::string& label, GLMMConst_850::ScoreType value) {
  DisplayC(*MCDisplay_850::GetOutStream(), label, value);
}

void DisplayC(const std::string& label, GLMMConst_850::LMatrixRowType value) {
  DisplayC(*MCDisplay_850::GetOutStream(), label, value);
}

}  // namespace GLMMComponentDisplay_850
