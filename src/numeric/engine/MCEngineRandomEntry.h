#pragma once

namespace MCEngine_850 {

// One coefficient of the random part of a predictable function: the value
// that multiplies column `column` of subject `subject` of random block
// `block`. Blocks, subjects and columns are those of the engine's input; a
// subject that no record of the fit has (say, -1) stands for a new subject,
// whose random effects are predicted as 0.
class MCEngineRandomEntry {
 public:
  MCEngineRandomEntry() = default;
  MCEngineRandomEntry(int block, int subject, int column, double value)
      : fBlock(block), fSubject(subject), fColumn(column), fValue(value) {}

  int GetBlock() const { return fBlock; }
  void SetBlock(int block) { fBlock = block; }
  int GetSubject() const { return fSubject; }
  void SetSubject(int subject) { fSubject = subject; }
  int GetColumn() const { return fColumn; }
  void SetColumn(int column) { fColumn = column; }
  double GetValue() const { return fValue; }
  void SetValue(double value) { fValue = value; }

 private:
  int fBlock = 0;
  int fSubject = 0;
  int fColumn = 0;
  double fValue = 1.0;
};

}  // namespace MCEngine_850
