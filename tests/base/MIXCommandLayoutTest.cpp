#include "base/MIXCommandLayout.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/parser/ParserMemory.h"

namespace L = MIXCommandLayout;

namespace {

// The offsets of the numeric block that docs/syntax.md lists in its table,
// "a to b" standing for every slot from a to b.
std::set<int> DocumentedNumericOffsets() {
  std::ifstream in(std::string(GLMIX_SOURCE_DIR) + "/docs/syntax.md");
  std::stringstream text;
  text << in.rdbuf();
  const std::string doc = text.str();
  const std::size_t start = doc.find("numeric block, by byte offset:");
  const std::size_t end = doc.find("\n\n", doc.find("| Offset |", start));
  std::set<int> offsets;
  if (start == std::string::npos || end == std::string::npos) return offsets;
  std::istringstream table(doc.substr(start, end - start));
  std::string line;
  while (std::getline(table, line)) {
    if (line.rfind("| ", 0) != 0 || line.find("---") != std::string::npos) continue;
    // Columns 1 and 3 hold offsets.
    std::vector<std::string> cells;
    std::size_t from = 1;
    for (std::size_t bar = line.find('|', from); bar != std::string::npos; bar = line.find('|', from)) {
      cells.push_back(line.substr(from, bar - from));
      from = bar + 1;
    }
    for (std::size_t c : {std::size_t(0), std::size_t(2)}) {
      if (c >= cells.size()) continue;
      std::smatch range;
      if (std::regex_search(cells[c], range, std::regex("(\\d+) to (\\d+)"))) {
        for (int o = std::stoi(range[1]); o <= std::stoi(range[2]); o += 8) offsets.insert(o);
        continue;
      }
      const std::regex number("\\d+");
      for (std::sregex_iterator it(cells[c].begin(), cells[c].end(), number), none; it != none; ++it) {
        offsets.insert(std::stoi(it->str()));
      }
    }
  }
  return offsets;
}

}  // namespace

TEST(MIXCommandLayout, SlotsAreWholeWordsInsideTheBlockInAscendingOrderWithoutOverlap) {
  int next = 0;
  std::set<std::string> names;
  for (const L::Entry& entry : L::kNumericSlots) {
    EXPECT_TRUE(names.insert(entry.fpName).second) << entry.fpName;
    EXPECT_EQ(entry.fOffset % 8, 0) << entry.fpName;
    EXPECT_GE(entry.fOffset, next) << entry.fpName << " overlaps the slot before it";
    EXPECT_GE(entry.fCount, 1) << entry.fpName;
    next = entry.fOffset + 8 * entry.fCount;
  }
  EXPECT_LE(next, ParserMemory::kNumericBytes);
}

TEST(MIXCommandLayout, TheSavedVariablesHaveARunOfSlotsEach) {
  for (const L::Entry& entry : L::kNumericSlots) {
    const std::string name = entry.fpName;
    EXPECT_EQ(entry.fCount, name == "SAVE_KINDS" || name == "SAVE_NAMES" ? L::SAVE_SLOTS : 1) << name;
  }
  EXPECT_EQ(L::SAVE_KINDS.At(6).fOffset, L::SAVE_KINDS.fOffset + 48);
}

TEST(MIXCommandLayout, FileNamesFollowOneAnotherInsideTheCharacterBlock) {
  EXPECT_EQ(L::MODEL_FILE.fOffset + L::MODEL_FILE.fBytes, L::STATJSON_FILE.fOffset);
  EXPECT_EQ(L::STATJSON_FILE.fOffset + L::STATJSON_FILE.fBytes, L::STATXML_FILE.fOffset);
  EXPECT_LE(L::STATXML_FILE.fOffset + L::STATXML_FILE.fBytes, ParserMemory::kCharacterBytes);
}

TEST(MIXCommandLayout, RecordWordsCountTheirRecords) {
  EXPECT_EQ(L::CONTRAST_K + 1, L::CONTRAST_WORDS);
  EXPECT_EQ(L::MEANS_REFERENCE_TEXT + 1, L::MEANS_WORDS);
  EXPECT_EQ(L::COVARIATE_TEXT + 1, L::COVARIATE_WORDS);
}

// A handful written out, as the documentation gives them.
TEST(MIXCommandLayout, DocumentedOffsets) {
  EXPECT_EQ(L::CONFIDENCE.fOffset, 0);
  EXPECT_EQ(L::TARGET.fOffset, 104);
  EXPECT_EQ(L::CRITERIA_FORMAT.fOffset, 128);
  EXPECT_EQ(L::ESTIMATES_FORMAT.fOffset, 136);
  EXPECT_EQ(L::N_FIXED_TERMS.fOffset, 368);
  EXPECT_EQ(L::REPEATED_COVARIANCE.fOffset, 1536);
  EXPECT_EQ(L::SAVE_NAMES.fOffset, 1632);
  EXPECT_EQ(L::FILE_KIND.fOffset, 1688);
  EXPECT_EQ(L::SHOW_ESTIMATES.fOffset, 1832);
  EXPECT_EQ(L::MODEL_FILE.fOffset, 40);
  EXPECT_EQ(L::STATJSON_FILE.fOffset, 295);
  EXPECT_EQ(L::STATXML_FILE.fOffset, 550);
  EXPECT_EQ(L::FILE_NAME_BYTES, 255);
}

TEST(MIXCommandLayout, TheDocumentationListsEverySlotAndNoOther) {
  const std::set<int> documented = DocumentedNumericOffsets();
  ASSERT_FALSE(documented.empty()) << "the table of docs/syntax.md was not found";
  std::set<int> slots;
  for (const L::Entry& entry : L::kNumericSlots) slots.insert(entry.fOffset);
  EXPECT_EQ(documented, slots);
}
