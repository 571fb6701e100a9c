#pragma once

class AppCommandReader;
class ZORV_Dataset;

// The commands that give the data's dictionary in the command file. Each
// replaces what it sets for the variables it names.
class AppDictionaryCommands {
 public:
  // LABEL variable 'label' [variable 'label']...; '' removes a label.
  static void Label(AppCommandReader& reader, ZORV_Dataset* data);
  // VALUES variable... value 'label'... [/ ...]: the value labels; a list
  // without pairs removes them. The variables of a group are all numeric
  // (numbers as values) or all strings (texts as values).
  static void Values(AppCommandReader& reader, ZORV_Dataset* data);
  // MISSING variable... value... [/ ...]: the user-missing values; numbers
  // and at most one range (low THRU high, LOWEST, HIGHEST) for numeric
  // variables, texts for strings; NONE removes them.
  static void Missing(AppCommandReader& reader, ZORV_Dataset* data);
  // LEVEL variable... NOMINAL|ORDINAL|SCALE [/ ...]: the measurement level;
  // a string variable cannot be SCALE.
  static void Level(AppCommandReader& reader, ZORV_Dataset* data);
  // FORMAT variable... format [/ ...]: the display and write format of
  // numeric variables.
  static void Format(AppCommandReader& reader, ZORV_Dataset* data);
};
