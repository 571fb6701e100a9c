#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/data/OBS.h"

// Debug text of the data adapter, in the same form as the numeric
// component's: one line per call, the label, a blank and the value, on a
// stream that starts as standard output. Numbers are written with 15
// significant digits, the system-missing value as "missing"; an empty list
// shows "(none)".
class ACACommonDisplay {
 public:
  // Never null.
  static std::ostream* GetOutStream();
  // Sends all further text to the stream, which must outlive its use here.
  static void SetOutStream(std::ostream& stream);

  static void DisplayB(const std::string& label, bool value);
  static void DisplayBV(const std::string& label, const std::vector<bool>& values);
  static void DisplayD(const std::string& label, double value);
  static void DisplayI(const std::string& label, long value);
  static void DisplayIV(const std::string& label, const std::vector<int>& values);
  // A data value: numeric for type 0, else a string of `type` bytes, shown
  // in quotes without its trailing blanks.
  static void DisplayObs(const std::string& label, const OBS* value, int type = 0);
  static void DisplayS(const std::string& label, const std::string& value);
  static void DisplaySV(const std::string& label, const std::vector<std::string>& values);
  // A line of text without a label.
  static void DisplayText(const std::string& text);

  // The text of one number as the lines show it.
  static std::string NumberText(double value);
};
