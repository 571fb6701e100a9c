#include "app/AppMixedParser.h"

#include <algorithm>

#include "app/AppCommandReader.h"

// The hypotheses: /CONTRAST and /MEANS.

namespace {

std::string Plural(std::size_t n, const char* one, const char* many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

}  // namespace

void AppMixedParser::ParseContrast(AppCommandReader& reader) {
  AppMixedCommand::ContrastData test;
  const AppToken& start = reader.Peek();
  if (reader.IsString()) test.fLabel = reader.Next().fText;

  const std::size_t nBlocks = fCommand.fvRandomBlocks.size();
  const std::size_t nFixedExt = fCommand.fvFixedTerms.size() + (fCommand.fbIntercept ? 1 : 0);
  const std::size_t nRandom = static_cast<std::size_t>(fCommand.CountRandomTerms());
  if (nFixedExt == 0) {
    reader.FailAt(start, "expected a model with fixed effects for /CONTRAST, found neither an intercept nor a "
                         "fixed term");
  }
  std::vector<std::size_t> blockStart;
  for (std::size_t b = 0, sum = 0; b < nBlocks; ++b) {
    blockStart.push_back(sum);
    sum += fCommand.fvRandomBlocks[b].fvTerms.size();
  }

  // Per row: the values of each fixed and random term (per-effect form), or
  // of the two parts (all-values form). Missing terms are given no values.
  struct Row {
    std::vector<std::vector<double>> fvFixed;
    std::vector<std::vector<double>> fvRandom;
    std::vector<const AppToken*> fvFixedAt;
    std::vector<const AppToken*> fvRandomAt;
    const AppToken* fpAt = nullptr;
  };
  std::vector<Row> rows;
  int form = -1;  // 0 per effect, 1 all values
  const std::string rowExpected = "a term followed by its values, ALL followed by values, or '|'";

  do {
    Row row;
    row.fpAt = &reader.Peek();
    row.fvFixed.assign(form == 1 ? 1 : nFixedExt, {});
    row.fvRandom.assign(form == 1 ? 1 : nRandom, {});
    row.fvFixedAt.assign(row.fvFixed.size(), nullptr);
    row.fvRandomAt.assign(row.fvRandom.size(), nullptr);
    std::size_t part = 0;  // 0 the fixed part, then one part per random block
    bool any = false;
    while (!reader.AtSubcommandEnd() && !reader.IsSymbol(';') && !reader.IsSetting()) {
      const AppToken& at = reader.Peek();
      if (reader.AcceptSymbol('|')) {
        ++part;
        if (nBlocks == 0) {
          reader.FailAt(at, "expected a term followed by its values or ALL followed by values, found '|', but the "
                            "model has no /RANDOM block");
        }
        if (form == 1 && part > 1) reader.FailAt(at, "expected one '|' in the all-values form, found another");
        if (part > nBlocks) {
          reader.FailAt(at, "expected at most " + std::to_string(nBlocks) +
                                " '|', one for each /RANDOM block, found another");
        }
        continue;
      }
      if (reader.IsKeyword("ALL")) {
        if (form == 0) reader.FailAt(at, "expected a term as in the rest of the test, found ALL (a test is written "
                                         "either by terms or by ALL values throughout)");
        if (form == -1) {
          form = 1;
          row.fvFixed.assign(1, {});
          row.fvRandom.assign(1, {});
          row.fvFixedAt.assign(1, nullptr);
          row.fvRandomAt.assign(1, nullptr);
        }
        reader.Next();
        std::vector<std::vector<double>>& target = part == 0 ? row.fvFixed : row.fvRandom;
        std::vector<const AppToken*>& targetAt = part == 0 ? row.fvFixedAt : row.fvRandomAt;
        if (!target[0].empty()) reader.FailAt(at, "expected ALL once in each part of a row, found it again");
        target[0] = ReadValues(reader, "the values of ALL");
        targetAt[0] = &at;
        any = true;
        continue;
      }
      if (!IsTermStart(reader)) reader.Fail(at, rowExpected);
      if (form == 1) reader.FailAt(at, "expected ALL as in the rest of the test, found a term (a test is written "
                                       "either by terms or by ALL values throughout)");
      form = 0;
      AppMixedCommand::TermData term;
      if (reader.AcceptKeyword("INTERCEPT")) {
        term = InterceptTerm();
      } else {
        term = ParseTerm(reader);
      }
      std::size_t slot = 0;
      if (part == 0) {
        bool isIntercept = std::all_of(term.fvWords.begin(), term.fvWords.end(), [](INTEGER w) { return w == 0; });
        int found = -1;
        if (isIntercept) {
          if (!fCommand.fbIntercept) reader.FailAt(at, "expected a fixed term, found INTERCEPT, but the model has none (INTERCEPT=NO)");
          found = 0;
        } else {
          found = FindTerm(fCommand.fvFixedTerms, term);
          if (found < 0) reader.FailAt(at, "expected a term of /FIXED, found " + term.fText + ", which is not one");
          if (fCommand.fbIntercept) ++found;
        }
        slot = static_cast<std::size_t>(found);
        if (row.fvFixedAt[slot] != nullptr) reader.FailAt(at, "expected each term once in a row, found " + term.fText + " again");
        row.fvFixed[slot] = ReadValues(reader, "the values of " + term.fText);
        row.fvFixedAt[slot] = &at;
        if (isIntercept && row.fvFixed[slot].size() != 1) {
          reader.FailAt(at, "expected one value for INTERCEPT, found " + std::to_string(row.fvFixed[slot].size()));
        }
      } else {
        const AppMixedCommand::RandomBlockData& block = fCommand.fvRandomBlocks[part - 1];
        int found = FindTerm(block.fvTerms, term);
        if (found < 0) {
          reader.FailAt(at, "expected a term of /RANDOM block " + std::to_string(part) + ", found " + term.fText +
                                ", which is not one");
        }
        slot = blockStart[part - 1] + static_cast<std::size_t>(found);
        if (row.fvRandomAt[slot] != nullptr) reader.FailAt(at, "expected each term once in a row, found " + term.fText + " again");
        row.fvRandom[slot] = ReadValues(reader, "the values of " + term.fText);
        row.fvRandomAt[slot] = &at;
      }
      any = true;
    }
    if (!any) reader.Fail(reader.Peek(), rowExpected);
    if (form == 1 && row.fvFixed[0].empty()) {
      reader.FailAt(*row.fpAt, "expected ALL and the values of the fixed part first in each row of the all-values form");
    }
    rows.push_back(row);
  } while (reader.AcceptSymbol(';'));

  // The counts hold for every row: a term a row leaves out gets zeros; a
  // term with values must have as many in each row that gives it.
  std::size_t nFixedSlots = rows.front().fvFixed.size();
  std::size_t nRandomSlots = rows.front().fvRandom.size();
  std::vector<int> fixedCounts(nFixedSlots, 0), randomCounts(nRandomSlots, 0);
  auto settle = [&](std::vector<int>& counts, bool fixed) {
    for (std::size_t s = 0; s < counts.size(); ++s) {
      const Row* first = nullptr;
      for (const Row& row : rows) {
        const std::vector<double>& values = fixed ? row.fvFixed[s] : row.fvRandom[s];
        const AppToken* at = fixed ? row.fvFixedAt[s] : row.fvRandomAt[s];
        if (at == nullptr) {
          if (form == 1 && first != nullptr) {
            reader.FailAt(*row.fpAt, std::string("expected the ") + (fixed ? "fixed" : "random") +
                                         " part in every row, as in the first, found a row without it");
          }
          continue;
        }
        if (first == nullptr) {
          first = &row;
          counts[s] = static_cast<int>(values.size());
          if (form == 1 && &row != &rows.front()) {
            reader.FailAt(*at, std::string("expected no ") + (fixed ? "fixed" : "random") +
                                   " part, as in the first row, found one");
          }
        } else if (static_cast<int>(values.size()) != counts[s]) {
          reader.FailAt(*at, "expected " + Plural(static_cast<std::size_t>(counts[s]), "value", "values") +
                                 " as in the earlier rows, found " + std::to_string(values.size()));
        }
      }
    }
  };
  settle(fixedCounts, true);
  settle(randomCounts, false);

  test.fbAllValues = form == 1;
  test.fvFixedCounts = fixedCounts;
  test.fvRandomCounts = randomCounts;
  for (const Row& row : rows) {
    std::vector<double> values;
    for (std::size_t s = 0; s < nFixedSlots; ++s) {
      if (row.fvFixedAt[s] != nullptr) values.insert(values.end(), row.fvFixed[s].begin(), row.fvFixed[s].end());
      else values.insert(values.end(), static_cast<std::size_t>(fixedCounts[s]), 0.0);
    }
    for (std::size_t s = 0; s < nRandomSlots; ++s) {
      if (row.fvRandomAt[s] != nullptr) values.insert(values.end(), row.fvRandom[s].begin(), row.fvRandom[s].end());
      else values.insert(values.end(), static_cast<std::size_t>(randomCounts[s]), 0.0);
    }
    test.fvRows.push_back(values);
  }

  std::vector<std::string> seen;
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, "';', K= or the end of /CONTRAST");
    if (name != "K") {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), "';', K= or the end of /CONTRAST");
    }
    const AppToken& t = reader.Peek();
    test.fvK = ReadValues(reader, "one K value for each row");
    if (test.fvK.size() != rows.size()) {
      reader.FailAt(t, "expected " + Plural(rows.size(), "K value", "K values") + ", one for each row, found " +
                           std::to_string(test.fvK.size()));
    }
  }
  fCommand.fvContrasts.push_back(test);
}

void AppMixedParser::ParseMeans(AppCommandReader& reader) {
  AppMixedCommand::MeansData means;
  const std::size_t nCovariates = fCommand.fvCovariates.size();
  means.fvbHeld.assign(nCovariates, false);
  means.fvHeldValue.assign(nCovariates, 0.0);
  means.fvHeldText.assign(nCovariates, std::string());

  const std::string tableExpected = "a factor, a crossing of factors (A*B) or OVERALL";
  if (reader.IsKeyword("OVERALL") && !reader.IsSetting()) {
    reader.Next();
  } else {
    do {
      const AppToken& at = reader.Peek();
      if (at.fKind != AppToken::WORD || reader.IsSetting()) reader.Fail(at, tableExpected);
      int column = ReadVariable(reader, "a factor");
      int place = FactorPlace(column);
      if (place < 0) reader.FailAt(at, "expected a factor, found '" + at.fText + "', which is not named after BY");
      if (Contains(means.fvFactors, place)) reader.FailAt(at, "expected each factor once, found '" + at.fText + "' again");
      means.fvFactors.push_back(place);
    } while (reader.AcceptSymbol('*'));
  }

  std::vector<std::string> seen;
  const std::string allowed = "COMPARE=, REFERENCE=, ADJUST= or AT=";
  const AppToken* referenceAt = nullptr;
  const AppToken* adjustAt = nullptr;
  const AppToken* referenceValue = nullptr;
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name == "COMPARE") {
      const AppToken& t = reader.Peek();
      int column = ReadVariable(reader, "a factor of the table");
      int place = FactorPlace(column);
      auto it = std::find(means.fvFactors.begin(), means.fvFactors.end(), place);
      if (place < 0 || it == means.fvFactors.end()) {
        reader.FailAt(t, "expected a factor of the table, found '" + t.fText + "', which is not one");
      }
      means.fCompare = static_cast<int>(it - means.fvFactors.begin()) + 1;
    } else if (name == "REFERENCE") {
      referenceAt = &reader.GetCommand().fvTokens[at];
      const AppToken& t = reader.Peek();
      referenceValue = &t;
      if (reader.IsKeyword("FIRST")) {
        means.fReference = AppMixedCommand::REFERENCE_FIRST;
      } else if (reader.IsKeyword("LAST")) {
        means.fReference = AppMixedCommand::REFERENCE_LAST;
      } else if (reader.IsKeyword("MEAN")) {
        means.fReference = AppMixedCommand::REFERENCE_MEAN;
      } else if (reader.IsNumber()) {
        means.fReference = AppMixedCommand::REFERENCE_NUMBER;
        means.fReferenceNumber = t.fNumber;
      } else if (reader.IsString()) {
        means.fReference = AppMixedCommand::REFERENCE_TEXT;
        means.fReferenceText = t.fText;
      } else {
        reader.Fail(t, "FIRST, LAST, MEAN, a number or a quoted text");
      }
      reader.Next();
    } else if (name == "ADJUST") {
      adjustAt = &reader.GetCommand().fvTokens[at];
      means.fAdjust = 1 + ReadChoice(reader, {"LSD", "SEQUENTIALBONFERRONI", "SEQUENTIALSIDAK"},
                                     "LSD, SEQUENTIALBONFERRONI or SEQUENTIALSIDAK");
    } else if (name == "AT") {
      do {
        const AppToken& t = reader.Peek();
        int column = ReadVariable(reader, "a covariate");
        int place = CovariatePlace(column);
        if (place < 0) reader.FailAt(t, "expected a covariate, found '" + t.fText + "', which is not named after WITH");
        std::size_t p = static_cast<std::size_t>(place);
        if (means.fvbHeld[p]) reader.FailAt(t, "expected each covariate once, found '" + t.fText + "' again");
        reader.ExpectSymbol('(', "'(' and the value of " + t.fText);
        const AppToken& v = reader.Peek();
        means.fvHeldValue[p] = reader.ExpectNumber("a number");
        means.fvHeldText[p] = v.fText;
        means.fvbHeld[p] = true;
        reader.ExpectSymbol(')', "')'");
      } while (reader.IsWord() && !reader.IsSetting());
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
  if (means.fCompare == 0 && referenceAt != nullptr) {
    reader.FailAt(*referenceAt, "expected COMPARE= with REFERENCE=, found none");
  }
  if (means.fCompare == 0 && adjustAt != nullptr) reader.FailAt(*adjustAt, "expected COMPARE= with ADJUST=, found none");
  if (means.fCompare > 0 && referenceValue != nullptr) {
    int factor = fCommand.fvFactors[static_cast<std::size_t>(means.fvFactors[static_cast<std::size_t>(means.fCompare - 1)])];
    bool numeric = IsNumeric(factor);
    if (means.fReference == AppMixedCommand::REFERENCE_NUMBER && !numeric) {
      reader.FailAt(*referenceValue, "expected a quoted text for the string factor '" + VariableName(factor) +
                                         "', found " + referenceValue->fText);
    }
    if (means.fReference == AppMixedCommand::REFERENCE_TEXT && numeric) {
      reader.FailAt(*referenceValue, "expected a number for the numeric factor '" + VariableName(factor) +
                                         "', found the text '" + referenceValue->fText + "'");
    }
  }
  fCommand.fvMeans.push_back(means);
}
