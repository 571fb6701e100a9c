#include "app/AppExprFunction.h"

#include <cfloat>
#include <cmath>

#include "app/AppCommandReader.h"
#include "host/data/OBS.h"
#include "host/data/ZORV_Format.h"
#include "host/io/NumberText.h"
#include "host/io/Utf8Text.h"
#include "host/output/ToString.h"

namespace {

using Args = std::vector<AppExprValue>;

// A numeric result: false, and missing, when it is not a finite number.
bool Finite(double value, AppExprValue& out) {
  out = std::isfinite(value) ? AppExprValue::Number(value) : AppExprValue::MissingNumber();
  return std::isfinite(value);
}

template <double (*F)(double)>
bool Unary(const AppExprNode&, const Args& args, AppExprValue& out) {
  return Finite(F(args[0].fNumber), out);
}

double Abs(double x) { return std::fabs(x); }
double Exp(double x) { return std::exp(x); }
double Ln(double x) { return std::log(x); }
double Log10(double x) { return std::log10(x); }
double Sqrt(double x) { return std::sqrt(x); }
double Sin(double x) { return std::sin(x); }
double Cos(double x) { return std::cos(x); }
double Atan(double x) { return std::atan(x); }
double Trunc(double x) { return std::trunc(x); }

// Half away from zero, at the decimals asked for. The product with the power
// of ten is nudged by a few units in the last place, so that a value written
// with a final 5 (2.675) rounds as written although its double lies a hair
// below.
bool Round(const AppExprNode&, const Args& args, AppExprValue& out) {
  const double decimals = args.size() > 1 ? std::trunc(args[1].fNumber) : 0.0;
  if (decimals < -15 || decimals > 15) return Finite(NAN, out);
  // Powers of ten are exact as doubles; their reciprocals are not.
  const double power = std::pow(10.0, std::fabs(decimals));
  const double scaled = decimals >= 0 ? args[0].fNumber * power : args[0].fNumber / power;
  const double nudged = std::round(scaled + std::copysign(std::fabs(scaled) * 4 * DBL_EPSILON, scaled));
  return Finite(decimals >= 0 ? nudged / power : nudged * power, out);
}

bool Mod(const AppExprNode&, const Args& args, AppExprValue& out) {
  return Finite(std::fmod(args[0].fNumber, args[1].fNumber), out);
}

// MIN, MAX, MEAN and SUM take the arguments that are not missing; with none
// the result is missing.
template <int Which>
bool Summary(const AppExprNode&, const Args& args, AppExprValue& out) {
  double result = 0.0;
  int valid = 0;
  for (const AppExprValue& arg : args) {
    if (arg.IsMissingNumber()) continue;
    const double x = arg.fNumber;
    if (valid == 0) result = Which == 2 || Which == 3 ? 0.0 : x;
    if (Which == 0) result = std::min(result, x);
    if (Which == 1) result = std::max(result, x);
    if (Which == 2 || Which == 3) result += x;
    ++valid;
  }
  if (valid == 0) {
    out = AppExprValue::MissingNumber();
    return true;
  }
  if (Which == 2) result /= valid;
  return Finite(result, out);
}

bool IsMissing(const AppExprNode& call, const Args& args, AppExprValue& out) {
  const bool missing =
      call.fvArgs[0]->fType == AppExprNode::NUMERIC ? args[0].IsMissingNumber() : args[0].fbMissingText;
  out = AppExprValue::Number(missing ? 1.0 : 0.0);
  return true;
}

bool Pi(const AppExprNode&, const Args&, AppExprValue& out) { return Finite(std::acos(-1.0), out); }

bool Concat(const AppExprNode&, const Args& args, AppExprValue& out) {
  std::string text;
  for (const AppExprValue& arg : args) text += arg.fText;
  out = AppExprValue::Text(text);
  return true;
}

// Byte offset of the character `index` (0-based) of UTF-8 text, or its size.
std::size_t CharOffset(const std::string& text, double index) {
  std::size_t at = 0;
  for (double i = 0; i < index && at < text.size(); ++i) {
    ++at;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
  }
  return at;
}

// Characters from `start` (from 1), `length` of them or to the end.
bool Substr(const AppExprNode&, const Args& args, AppExprValue& out) {
  const std::string& text = args[0].fText;
  const double start = std::max(std::trunc(args[1].fNumber), 1.0);
  const std::size_t begin = CharOffset(text, start - 1);
  std::size_t end = text.size();
  if (args.size() > 2) {
    const double length = std::trunc(args[2].fNumber);
    end = length <= 0 ? begin : begin + CharOffset(text.substr(begin), length);
  }
  out = AppExprValue::Text(text.substr(begin, end - begin));
  return true;
}

template <int Upper>
bool ChangeCase(const AppExprNode&, const Args& args, AppExprValue& out) {
  std::string text = args[0].fText;
  for (char& c : text) {
    if (Upper && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (!Upper && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  out = AppExprValue::Text(text);
  return true;
}

std::string TrimBlanks(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool Trim(const AppExprNode&, const Args& args, AppExprValue& out) {
  out = AppExprValue::Text(TrimBlanks(args[0].fText));
  return true;
}

bool Length(const AppExprNode&, const Args& args, AppExprValue& out) {
  std::string text = args[0].fText;
  text.erase(text.find_last_not_of(' ') + 1);
  out = AppExprValue::Number(static_cast<double>(Utf8Text::CharCount(text.data(), text.size())));
  return true;
}

// A blank text is missing; a text that is no number cannot be computed.
bool Number(const AppExprNode&, const Args& args, AppExprValue& out) {
  const std::string text = TrimBlanks(args[0].fText);
  double value = 0.0;
  if (text.empty()) {
    out = AppExprValue::MissingNumber();
    return true;
  }
  if (!NumberText::Parse(text, value)) return Finite(NAN, out);
  return Finite(value, out);
}

bool ReadFormat(const std::string& text, ZORV_Format& format) {
  return ZORV_Format::Parse(text, format) && !format.IsString();
}

// The shortest text that reads back as the number, or the number in a
// display format.
bool String(const AppExprNode&, const Args& args, AppExprValue& out) {
  if (args.size() < 2) {
    out = AppExprValue::Text(NumberText::Shortest(args[0].fNumber));
    return true;
  }
  ZORV_Format format;
  if (!ReadFormat(args[1].fText, format)) {
    out = AppExprValue::MissingText();
    return false;
  }
  OBS cell;
  cell.fNum = args[0].fNumber;
  out = AppExprValue::Text(TrimBlanks(ToString(&cell, format)));
  return true;
}

const std::vector<AppExprFunction>& Table() {
  using F = AppExprFunction;
  static const std::vector<AppExprFunction> table = {
      {"ABS", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Abs>, "ABS(x)", "absolute value"},
      {"EXP", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Exp>, "EXP(x)", "e to the power x"},
      {"LN", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Ln>, "LN(x)", "natural logarithm"},
      {"LOG10", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Log10>, "LOG10(x)", "base-10 logarithm"},
      {"SQRT", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Sqrt>, "SQRT(x)", "square root"},
      {"SIN", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Sin>, "SIN(x)", "sine (x in radians)"},
      {"COS", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Cos>, "COS(x)", "cosine (x in radians)"},
      {"ATAN", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Atan>, "ATAN(x)", "arc tangent, in radians"},
      {"ROUND", "NN", 1, 2, 'N', F::PLAIN, F::PROPAGATE, Round, "ROUND(x[, d])",
       "x rounded to d decimals (default 0)"},
      {"TRUNC", "N", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Unary<Trunc>, "TRUNC(x)", "x without its fraction"},
      {"MOD", "NN", 2, 2, 'N', F::PLAIN, F::PROPAGATE, Mod, "MOD(x, y)",
       "remainder of x / y, with the sign of x"},
      {"MIN", "N", 1, -1, 'N', F::PLAIN, F::OWN, Summary<0>, "MIN(x, ...)", "smallest of the values not missing"},
      {"MAX", "N", 1, -1, 'N', F::PLAIN, F::OWN, Summary<1>, "MAX(x, ...)", "largest of the values not missing"},
      {"MEAN", "N", 1, -1, 'N', F::PLAIN, F::OWN, Summary<2>, "MEAN(x, ...)", "mean of the values not missing"},
      {"SUM", "N", 1, -1, 'N', F::PLAIN, F::OWN, Summary<3>, "SUM(x, ...)", "sum of the values not missing"},
      {"PI", "", 0, 0, 'N', F::PLAIN, F::PROPAGATE, Pi, "PI()", "the number pi"},
      {"ROW", "", 0, 0, 'N', F::ROW, F::PROPAGATE, nullptr, "ROW()", "the case's position in the data, from 1"},
      {"MISSING", "A", 1, 1, 'N', F::PLAIN, F::OWN, IsMissing, "MISSING(x)",
       "1 when x is missing, else 0"},
      {"IF", "NAA", 2, 3, 'B', F::CONDITIONAL, F::OWN, nullptr, "IF(c, a[, b])",
       "a where c is true, else b (or missing)"},
      {"CONCAT", "S", 1, -1, 'S', F::PLAIN, F::PROPAGATE, Concat, "CONCAT(s, ...)", "the texts joined"},
      {"SUBSTR", "SNN", 2, 3, 'S', F::PLAIN, F::PROPAGATE, Substr, "SUBSTR(s, start[, length])",
       "length characters of s from start (from 1)"},
      {"UPPER", "S", 1, 1, 'S', F::PLAIN, F::PROPAGATE, ChangeCase<1>, "UPPER(s)", "s in capitals (a to z)"},
      {"LOWER", "S", 1, 1, 'S', F::PLAIN, F::PROPAGATE, ChangeCase<0>, "LOWER(s)", "s in small letters (A to Z)"},
      {"TRIM", "S", 1, 1, 'S', F::PLAIN, F::PROPAGATE, Trim, "TRIM(s)", "s without blanks at either end"},
      {"LENGTH", "S", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Length, "LENGTH(s)",
       "characters of s, trailing blanks not counted"},
      {"NUMBER", "S", 1, 1, 'N', F::PLAIN, F::PROPAGATE, Number, "NUMBER(s)",
       "the number s holds; missing when s is blank"},
      {"STRING", "NS", 1, 2, 'S', F::PLAIN, F::PROPAGATE, String, "STRING(x[, format])",
       "x as text, shortest or in a format ('F8.2')"},
  };
  return table;
}

}  // namespace

char AppExprFunction::ArgType(int index) const {
  const int declared = static_cast<int>(std::char_traits<char>::length(fArgTypes));
  if (declared == 0) return 'A';
  return fArgTypes[index < declared ? index : declared - 1];
}

std::string AppExprFunction::DescribeArity() const {
  auto arguments = [](int n) { return std::to_string(n) + (n == 1 ? " argument" : " arguments"); };
  if (fMaxArgs < 0) return "takes at least " + arguments(fMinArgs);
  if (fMinArgs == fMaxArgs) return fMinArgs == 0 ? std::string("takes no arguments") : "takes " + arguments(fMinArgs);
  if (fMaxArgs == fMinArgs + 1) return "takes " + std::to_string(fMinArgs) + " or " + arguments(fMaxArgs);
  return "takes " + std::to_string(fMinArgs) + " to " + arguments(fMaxArgs);
}

bool AppExprFunction::CheckLiteral(int index, const AppExprNode& arg, std::string& problem) const {
  ZORV_Format format;
  if (fEvaluate == String && index == 1 && arg.fKind == AppExprNode::TEXT && !ReadFormat(arg.fText, format)) {
    problem = "expected a number format such as 'F8.2' as argument 2 of STRING, found " + arg.Describe();
    return false;
  }
  return true;
}

const AppExprFunction* AppExprFunction::Find(const std::string& name) {
  const std::string upper = AppCommandReader::Upper(name);
  for (const AppExprFunction& function : Table()) {
    if (upper == function.fName) return &function;
  }
  return nullptr;
}

const std::vector<AppExprFunction>& AppExprFunction::All() { return Table(); }
