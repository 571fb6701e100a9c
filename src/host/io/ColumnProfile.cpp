#include "host/io/ColumnProfile.h"

#include <algorithm>
#include <string>

#include "host/data/ZORV_Variable.h"
#include "host/io/NumberText.h"

void ColumnProfile::AddDigits(double value, int intDigits, int decimals) {
  ++fNumbers;
  if (value < 0.0) fbNegative = true;
  fMaxIntDigits = std::max(fMaxIntDigits, intDigits);
  fMaxDecimals = std::max(fMaxDecimals, decimals);
}

void ColumnProfile::AddText(const char* text, std::size_t size, bool quoted, char decimalPoint) {
  ++fValues;
  if (quoted) ++fQuoted;
  fMaxBytes = std::max(fMaxBytes, size);
  if (!fbNumeric) return;
  double value = 0.0;
  int intDigits = 0;
  int decimals = 0;
  if (NumberText::Parse(text, size, decimalPoint, value, intDigits, decimals))
    AddDigits(value, intDigits, decimals);
  else
    fbNumeric = false;
}

void ColumnProfile::AddNumber(double value) {
  ++fValues;
  std::string text = NumberText::Shortest(value);
  fMaxBytes = std::max(fMaxBytes, text.size());
  double parsed = 0.0;
  int intDigits = 0;
  int decimals = 0;
  if (NumberText::Parse(text.data(), text.size(), '.', parsed, intDigits, decimals))
    AddDigits(value, intDigits, decimals);
}

ZORV_Format ColumnProfile::NumericFormat() const {
  if (fNumbers == 0) return ZORV_Format(ZORV_Format::F, 8, 2);
  int intWidth = fMaxIntDigits + (fbNegative ? 1 : 0);
  if (intWidth > MAXNUMERICWIDTH) return ZORV_Format(ZORV_Format::E, 12, 4);
  int decimals = std::min(fMaxDecimals, static_cast<int>(MAXDECIMALS));
  // Decimals give way when the integer digits need the room.
  if (decimals > 0 && intWidth + 1 + decimals > MAXNUMERICWIDTH) decimals = std::max(0, MAXNUMERICWIDTH - intWidth - 1);
  int width = intWidth + (decimals > 0 ? decimals + 1 : 0);
  return ZORV_Format(ZORV_Format::F, static_cast<std::uint16_t>(width), static_cast<std::uint8_t>(decimals));
}

int ColumnProfile::StringWidth() const { return static_cast<int>(std::max<std::size_t>(fMaxBytes, 1)); }

int ColumnProfile::DefaultLevel() const {
  if (!fbNumeric) return ZORV_Variable::NOMINAL;
  return AllQuoted() ? ZORV_Variable::NOMINAL : ZORV_Variable::SCALE;
}
