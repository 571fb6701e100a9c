#include "app/AppRecodeCommand.h"

#include <algorithm>
#include <cmath>

#include "app/AppColumnValues.h"
#include "app/AppCommandReader.h"
#include "app/AppComputeCommand.h"
#include "app/AppDataCommands.h"
#include "app/AppVariableReader.h"
#include "host/data/ZORV_Dataset.h"

namespace {

const char* TypeWord(bool text) { return text ? "a text" : "a number"; }

std::string Trimmed(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

void AppRecodeCommand::Run(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("RECODE", "RECODE");
  AppVariableReader::NeedData(reader, data);
  std::vector<Recoding> recodings;
  do {
    recodings.push_back(ParseRecoding(reader, *data));
  } while (reader.AcceptSymbol('/'));
  reader.ExpectEnd("INTO, '/' or the end of the command");
  std::vector<std::string> made;
  for (const Recoding& recoding : recodings) {
    for (std::size_t i = 0; i < recoding.fvInto.size(); ++i) {
      if (recoding.fvIntoColumns[i] >= 0) continue;
      const std::string upper = AppCommandReader::Upper(recoding.fvInto[i]);
      if (std::find(made.begin(), made.end(), upper) != made.end()) {
        reader.FailAt(reader.GetCommand().fvTokens.front(),
                      "expected each new variable once, found '" + recoding.fvInto[i] + "' again");
      }
      made.push_back(upper);
    }
  }
  // Every result is computed from the data as they were before any is stored.
  std::vector<Outcome> outcomes;
  for (const Recoding& recoding : recodings) {
    for (std::size_t i = 0; i < recoding.fvColumns.size(); ++i) outcomes.push_back(Compute(reader, *data, recoding, i));
  }
  for (const Outcome& outcome : outcomes) Store(*data, outcome);
}

AppRecodeCommand::Recoding AppRecodeCommand::ParseRecoding(AppCommandReader& reader, const ZORV_Dataset& data) {
  Recoding recoding;
  const std::size_t first = reader.GetIndex();
  recoding.fvColumns = AppVariableReader::ReadList(reader, data, "a variable to recode");
  recoding.fbTextSource = AppVariableReader::OneType(reader, data, first, recoding.fvColumns);
  if (!reader.IsSymbol('(')) reader.Fail(reader.Peek(), "a variable or '(' to start a rule such as (1=2)");
  std::vector<std::size_t> resultTokens;
  bool typed = false;
  while (reader.IsSymbol('(')) {
    if (!recoding.fvRules.empty() && recoding.fvRules.back().fvSources.back().fKind == Source::ELSE) {
      reader.Fail(reader.Peek(), "INTO, '/' or the end of the command after the rule with ELSE");
    }
    resultTokens.push_back(0);
    Rule rule = ParseRule(reader, recoding);
    resultTokens.back() = reader.GetIndex() - 2;
    if (rule.fResult == Rule::VALUE) {
      const AppToken& at = reader.GetCommand().fvTokens[resultTokens.back()];
      if (typed && rule.fbTextResult != recoding.fbTextResult) {
        reader.FailAt(at, std::string("expected ") + TypeWord(recoding.fbTextResult) +
                              " like the results of the rules before, found " + reader.Describe(at));
      }
      typed = true;
      recoding.fbTextResult = rule.fbTextResult;
    }
    recoding.fvRules.push_back(rule);
  }
  if (!typed) recoding.fbTextResult = recoding.fbTextSource;
  if (reader.IsKeyword("INTO")) {
    ParseInto(reader, data, recoding);
  } else if (recoding.fbTextResult != recoding.fbTextSource) {
    std::size_t first = 0;
    while (recoding.fvRules[first].fResult != Rule::VALUE) ++first;
    const AppToken& value = reader.GetCommand().fvTokens[resultTokens[first]];
    reader.FailAt(value, std::string("expected ") + TypeWord(recoding.fbTextSource) + " for the " +
                             (recoding.fbTextSource ? "string" : "numeric") + " variables recoded in place, found " +
                             reader.Describe(value));
  }
  // Copying a value keeps its type.
  for (std::size_t i = 0; i < recoding.fvRules.size(); ++i) {
    if (recoding.fvRules[i].fResult == Rule::COPY && recoding.fbTextResult != recoding.fbTextSource) {
      reader.FailAt(reader.GetCommand().fvTokens[resultTokens[i]],
                    std::string("expected ") + TypeWord(recoding.fbTextResult) +
                        " like the other results, found COPY, which keeps the " +
                        (recoding.fbTextSource ? "texts" : "numbers"));
    }
  }
  return recoding;
}

AppRecodeCommand::Rule AppRecodeCommand::ParseRule(AppCommandReader& reader, const Recoding& recoding) {
  Rule rule;
  reader.ExpectSymbol('(', "'('");
  do {
    if (!rule.fvSources.empty() && (rule.fvSources.back().fKind == Source::ELSE || reader.IsKeyword("ELSE"))) {
      reader.Fail(reader.Peek(), rule.fvSources.back().fKind == Source::ELSE ? "'=' after ELSE"
                                                                               : "a value, a range, MISSING or '='");
    }
    rule.fvSources.push_back(ParseSource(reader, recoding.fbTextSource));
  } while (!reader.IsSymbol('='));
  reader.Next();
  const AppToken& result = reader.Peek();
  if (reader.AcceptKeyword("MISSING")) {
    rule.fResult = Rule::MISSING;
  } else if (reader.AcceptKeyword("COPY")) {
    rule.fResult = Rule::COPY;
  } else if (result.fKind == AppToken::NUMBER) {
    rule.fNumber = result.fNumber;
    reader.Next();
  } else if (result.fKind == AppToken::STRING) {
    rule.fbTextResult = true;
    rule.fText = result.fText;
    reader.Next();
  } else {
    reader.Fail(result, "a value, MISSING or COPY after '='");
  }
  reader.ExpectSymbol(')', "')' to end the rule");
  return rule;
}

AppRecodeCommand::Source AppRecodeCommand::ParseSource(AppCommandReader& reader, bool textSource) {
  Source source;
  const AppToken& at = reader.Peek();
  const std::string expected = textSource ? "a text, MISSING or ELSE (the variables are strings)"
                                          : "a number, a range, MISSING or ELSE (the variables are numeric)";
  if (reader.AcceptKeyword("MISSING")) {
    source.fKind = Source::MISSING;
  } else if (reader.AcceptKeyword("ELSE")) {
    source.fKind = Source::ELSE;
  } else if (textSource) {
    if (at.fKind != AppToken::STRING) reader.Fail(at, expected);
    source.fText = Trimmed(at.fText);
    reader.Next();
  } else if (at.fKind == AppToken::NUMBER || reader.IsKeyword("LOWEST")) {
    source.fLow = ParseRangeEnd(reader, "LOWEST");
    source.fHigh = source.fLow;
    if (reader.AcceptKeyword("THRU")) {
      source.fKind = Source::RANGE;
      source.fHigh = ParseRangeEnd(reader, "HIGHEST");
      if (source.fHigh < source.fLow) {
        reader.FailAt(at, "expected a range whose low end is not above its high end, found " +
                              reader.Describe(at) + " THRU a lower value");
      }
    } else if (std::isinf(source.fLow)) {
      reader.Fail(reader.Peek(), "THRU after LOWEST");
    }
  } else {
    reader.Fail(at, expected);
  }
  return source;
}

double AppRecodeCommand::ParseRangeEnd(AppCommandReader& reader, const char* open) {
  if (reader.AcceptKeyword(open)) return std::string(open) == "LOWEST" ? -HUGE_VAL : HUGE_VAL;
  return reader.ExpectNumber(std::string("a number or ") + open);
}

void AppRecodeCommand::ParseInto(AppCommandReader& reader, const ZORV_Dataset& data, Recoding& recoding) {
  reader.ExpectKeyword("INTO", "INTO");
  for (std::size_t i = 0; i < recoding.fvColumns.size(); ++i) {
    const AppToken& at = reader.Peek();
    if (at.fKind != AppToken::WORD) {
      reader.Fail(at, "as many variables after INTO as are recoded (" + std::to_string(recoding.fvColumns.size()) + ")");
    }
    const int column = data.FindVarIndex(at.fText.c_str(), 0);
    if (column < 0) AppComputeCommand::CheckNewName(reader, at);
    if (column >= 0 && data.GetVariable(column)->IsString() != recoding.fbTextResult) {
      reader.FailAt(at, std::string("expected a ") + (recoding.fbTextResult ? "string" : "numeric") +
                            " variable for the results, found '" + at.fText + "'");
    }
    for (const std::string& earlier : recoding.fvInto) {
      if (AppCommandReader::Upper(earlier) == AppCommandReader::Upper(at.fText)) {
        reader.FailAt(at, "expected each variable once after INTO, found '" + at.fText + "' again");
      }
    }
    recoding.fvInto.push_back(at.fText);
    recoding.fvIntoColumns.push_back(column);
    reader.Next();
  }
  if (reader.IsWord()) {
    reader.FailAt(reader.Peek(), "expected as many variables after INTO as are recoded (" +
                                     std::to_string(recoding.fvColumns.size()) + "), found '" + reader.Peek().fText +
                                     "' more");
  }
}

const AppRecodeCommand::Rule* AppRecodeCommand::Match(const Recoding& recoding, const ZORV_Dataset& data, long row,
                                                      int column) {
  const bool missing = data.IsMissing(row, column);
  const bool systemMissing = data.IsSysMissing(row, column);
  const std::string text = recoding.fbTextSource ? data.GetString(row, column) : std::string();
  const double number = recoding.fbTextSource ? 0.0 : data.GetNum(row, column);
  for (const Rule& rule : recoding.fvRules) {
    for (const Source& source : rule.fvSources) {
      bool match = false;
      switch (source.fKind) {
        case Source::VALUE:
          match = recoding.fbTextSource ? text == source.fText : !systemMissing && number == source.fLow;
          break;
        case Source::RANGE:
          match = !missing && number >= source.fLow && number <= source.fHigh;
          break;
        case Source::MISSING:
          match = missing;
          break;
        case Source::ELSE:
          match = !missing;
          break;
      }
      if (match) return &rule;
    }
  }
  return nullptr;
}

AppRecodeCommand::Outcome AppRecodeCommand::Compute(AppCommandReader& reader, const ZORV_Dataset& data,
                                                    const Recoding& recoding, std::size_t index) {
  const long cases = data.GetCaseCount();
  Outcome outcome(AppColumnValues(recoding.fbTextResult, cases));
  outcome.fSource = recoding.fvColumns[index];
  outcome.fbInto = !recoding.fvInto.empty();
  outcome.fTarget = outcome.fbInto ? recoding.fvIntoColumns[index] : outcome.fSource;
  outcome.fNewName = outcome.fbInto ? recoding.fvInto[index] : std::string();
  AppColumnValues& values = outcome.fValues;
  for (long row = 0; row < cases; ++row) {
    if (row % 65536 == 0) AppDataCommands::StopIfInterrupted(reader);
    const Rule* rule = Match(recoding, data, row, outcome.fSource);
    if (rule != nullptr) ++outcome.fRecoded;
    if (rule != nullptr && rule->fResult == Rule::VALUE) {
      if (recoding.fbTextResult)
        values.SetText(row, rule->fText);
      else
        values.SetNumber(row, rule->fNumber);
      continue;
    }
    if (rule != nullptr && rule->fResult == Rule::MISSING) continue;
    // COPY takes the source's value; a case no rule matches keeps the
    // target's, or is missing in a new variable.
    const int from = rule != nullptr ? outcome.fSource : outcome.fTarget;
    if (from < 0) continue;
    if (recoding.fbTextResult)
      values.SetText(row, data.GetString(row, from));
    else if (!data.IsSysMissing(row, from))
      values.SetNumber(row, data.GetNum(row, from));
  }
  return outcome;
}

void AppRecodeCommand::Store(ZORV_Dataset& data, const Outcome& outcome) {
  const std::string sourceName = data.GetVariable(outcome.fSource)->GetName();
  std::string targetName = outcome.fNewName;
  long cut = 0;
  if (outcome.fTarget >= 0) {
    targetName = data.GetVariable(outcome.fTarget)->GetName();
    cut = outcome.fValues.StoreInto(data, outcome.fTarget);
  } else {
    const ZORV_Variable& source = *data.GetVariable(outcome.fSource);
    const int decimals = source.IsString() ? 0 : source.GetFormat().fDecimals;
    outcome.fValues.MakeVariable(data, targetName, decimals, ZORV_Variable::NOMINAL);
  }
  AppDataCommands::Say(sourceName + (outcome.fbInto ? " into " + targetName : std::string()) + ": " +
                       AppDataCommands::Count(outcome.fRecoded, "value", "values") + " of " +
                       std::to_string(data.GetCaseCount()) + " recoded.");
  if (outcome.fTarget >= 0) AppDataCommands::WarnCut(cut, targetName, data.GetVariable(outcome.fTarget)->GetType());
}
