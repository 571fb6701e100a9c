#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/output/BpNotesTable.h"
#include "host/strings/FacSTDictionary.h"
#include "host/strings/FacSTDirectory.h"

namespace {

const std::string kTables = std::string(GLMIX_SOURCE_DIR) + "/resources/strings";

std::string UnescapeCString(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size()) {
      char next = text[++i];
      switch (next) {
        case 'n':
          out += '\n';
          break;
        case 't':
          out += '\t';
          break;
        default:
          out += next;
          break;
      }
      continue;
    }
    out += text[i];
  }
  return out;
}

struct Use {
  std::string fKey;
  std::string fWhere;
};

// Every fixed text the code hands over for translation. Each call is found
// by its name, and the pattern is tried on the text that follows it only:
// running the patterns over whole files is slow.
std::vector<Use> TranslatedKeysInSources() {
  namespace fs = std::filesystem;
  const std::string literal = R"re("((?:[^"\\\n]|\\.)*)")re";
  struct Call {
    std::string fName;
    std::regex fPattern;
  };
  const std::vector<Call> calls = {
      {"BpString", std::regex(R"re(BpString(?:\s+\w+)?\s*[({]\s*)re" + literal + R"re(\s*,\s*true)re")},
      {"BpComposite", std::regex(R"re(BpComposite(?:\s+\w+)?\s*[({]\s*)re" + literal + R"re(\s*,\s*true)re")},
      {"LookUp", std::regex(R"re(LookUp\s*\(\s*)re" + literal)},
      {"GetTranslatedText", std::regex(R"re(GetTranslatedText\s*\(\s*)re" + literal)},
      {"Translate", std::regex(R"re(Translate\s*\(\s*)re" + literal)},
  };
  std::vector<Use> uses;
  for (const auto& entry : fs::recursive_directory_iterator(std::string(GLMIX_SOURCE_DIR) + "/src")) {
    const std::string extension = entry.path().extension().string();
    if (!entry.is_regular_file() || (extension != ".cpp" && extension != ".h")) continue;
    std::ifstream in(entry.path());
    std::stringstream buffer;
    buffer << in.rdbuf();
    const std::string source = buffer.str();
    for (const Call& call : calls) {
      for (std::size_t at = source.find(call.fName); at != std::string::npos;
           at = source.find(call.fName, at + call.fName.size())) {
        bool bWordStart = at == 0 || !(std::isalnum(static_cast<unsigned char>(source[at - 1])) || source[at - 1] == '_');
        if (!bWordStart) continue;
        const std::string window = source.substr(at, 1200);
        std::smatch match;
        if (std::regex_search(window, match, call.fPattern, std::regex_constants::match_continuous)) {
          uses.push_back({UnescapeCString(match[1].str()), entry.path().string()});
        }
      }
    }
  }
  return uses;
}

std::multiset<std::string> Markers(const std::string& text) {
  static const std::regex marker(R"(\^\d+|%\d+|\]\d+)");
  std::multiset<std::string> found;
  for (std::sregex_iterator it(text.begin(), text.end(), marker), end; it != end; ++it) found.insert(it->str());
  return found;
}

}  // namespace

TEST(StringTables, LoadWithoutProblems) {
  auto directory = FacSTDirectory::Get(kTables);
  for (const std::string& problem : directory->GetProblems()) ADD_FAILURE() << problem;
  EXPECT_NE(directory->GetTable("Global"), nullptr);
  EXPECT_NE(directory->GetTable("Mixed"), nullptr);
  EXPECT_NE(directory->GetTable("Generalized Linear Mixed Models"), nullptr);
  EXPECT_NE(directory->GetTable("Host Messages"), nullptr);
}

TEST(StringTables, EveryTranslatedKeyInTheCodeHasAnEntry) {
  FacSTDictionary dictionary(kTables);
  std::vector<Use> uses = TranslatedKeysInSources();
  // The output objects themselves translate a few texts; finding them shows
  // that the scan works.
  std::set<std::string> seen;
  for (const Use& use : uses) seen.insert(use.fKey);
  EXPECT_EQ(seen.count("Notes"), 1u);
  EXPECT_EQ(seen.count("Split File [%1 = %2:, ^1 = ^2:]1"), 1u);
  for (const Use& use : uses) {
    EXPECT_TRUE(dictionary.Contains(use.fKey)) << "no string table entry for \"" << use.fKey << "\" used in "
                                               << use.fWhere;
  }
}

TEST(StringTables, NotesGroupNamesHaveEntries) {
  FacSTDictionary dictionary(kTables);
  for (int group = -1; group <= 6; ++group) {
    EXPECT_TRUE(dictionary.Contains(BpNotesTable::GroupName(group))) << group;
  }
}

TEST(StringTables, TextsKeepTheMarkersOfTheirKeys) {
  auto directory = FacSTDirectory::Get(kTables);
  for (const auto& table : directory->GetTables()) {
    for (const auto& entry : table.second.GetEntries()) {
      std::multiset<std::string> inText = Markers(entry.second);
      std::multiset<std::string> inKey = Markers(entry.first);
      for (const std::string& marker : inKey) {
        EXPECT_GE(inText.count(marker), inKey.count(marker))
            << table.first << ": the text of \"" << entry.first << "\" lacks " << marker;
      }
    }
  }
}

TEST(StringTables, TextsAreWrittenOut) {
  auto directory = FacSTDirectory::Get(kTables);
  for (const auto& table : directory->GetTables()) {
    for (const auto& entry : table.second.GetEntries()) {
      EXPECT_EQ(entry.second.find("..."), std::string::npos) << table.first << ": " << entry.first;
      EXPECT_FALSE(entry.second.empty()) << table.first << ": " << entry.first;
    }
  }
}

TEST(StringTables, KeysTheChartsPatchKeepTheirFragments) {
  FacSTDictionary dictionary(kTables);
  dictionary.SetProcedure("Generalized Linear Mixed Models");
  EXPECT_NE(dictionary.LookUp("Continuous predictors fixed at [%1=%2:,^1=^2:]1").find("[%1=%2:,^1=^2:]1"),
            std::string::npos);
  std::string tooltip = dictionary.LookUp("Probability Distribution ^1, Link Function ^2 ...");
  EXPECT_LT(tooltip.find("^1"), tooltip.find("^2"));
}
