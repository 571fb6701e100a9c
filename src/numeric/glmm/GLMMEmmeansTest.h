#pragma once

#include <iosfwd>
#include <vector>

namespace MCGLMM_850 {

// The F test that the means of the compare factor's categories are equal,
// within one combination of the other factors of the table: their category
// codes, in the table's order without the compare factor. Not valid, with
// the statistics missing, when fewer than two of those means are estimable.
class GLMMEmmeansTest {
 public:
  GLMMEmmeansTest();

  const std::vector<int>& GetCategories() const { return fvCategories; }
  void SetCategories(const std::vector<int>& categories) { fvCategories = categories; }
  bool GetValid() const { return fbValid; }
  void SetValid(bool valid) { fbValid = valid; }
  double GetF() const { return fF; }
  void SetF(double value) { fF = value; }
  double GetDF1() const { return fDF1; }
  void SetDF1(double value) { fDF1 = value; }
  double GetDF2() const { return fDF2; }
  void SetDF2(double value) { fDF2 = value; }
  double GetSig() const { return fSig; }
  void SetSig(double value) { fSig = value; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<int> fvCategories;
  bool fbValid;
  double fF;
  double fDF1;
  double fDF2;
  double fSig;
};

}  // namespace MCGLMM_850
