#include "host/adapter/ACAInpAdaptMsg.h"

#include <gtest/gtest.h>

#include "host/data/HostDataTestSource.h"
#include "host/data/ZORV_Session.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"

namespace {

// The messages that reached the host document since the test began.
class HostMessages {
 public:
  HostMessages() : fStart(Items().size()) { ZORV_Session::Current().BeginCommand(); }
  ~HostMessages() { ZORV_Session::Current().BeginCommand(); }

  std::vector<const OmMessage*> New() const {
    std::vector<const OmMessage*> messages;
    for (std::size_t i = fStart; i < Items().size(); ++i) {
      if (Items()[i].fKind == OmItem::MESSAGE) messages.push_back(Items()[i].fpMessage.get());
    }
    return messages;
  }

 private:
  static std::vector<OmItem>& Items() { return BpProcedure::HostDocument().fRoot.fvItems; }
  std::size_t fStart;
};

}  // namespace

TEST(ACAInpAdaptMsg, NoValidCasesIsAnError) {
  HostMessages messages;
  hostdata_test::HostDataTestSource source;
  ACAInpAdaptMsg msg(source);
  EXPECT_EQ(&msg.GetDataSource(), &source);
  msg.NoValidCases();
  auto added = messages.New();
  ASSERT_EQ(added.size(), 1u);
  EXPECT_EQ(added[0]->fLevel, OmMessage::ERROR);
  EXPECT_EQ(added[0]->fText, "There are no valid cases for this analysis.");
  EXPECT_TRUE(source.FatalError());
}

TEST(ACAInpAdaptMsg, SplitAndSelectionMessagesAreWarnings) {
  HostMessages messages;
  hostdata_test::HostDataTestSource source;
  ACAInpAdaptMsg msg(source);
  msg.NoValidCasesSplit();
  msg.NoValidCasesForSelect();
  auto added = messages.New();
  ASSERT_EQ(added.size(), 2u);
  EXPECT_EQ(added[0]->fLevel, OmMessage::WARNING);
  EXPECT_NE(added[0]->fText.find("no valid cases in this split file group"), std::string::npos);
  EXPECT_EQ(added[1]->fLevel, OmMessage::WARNING);
  EXPECT_NE(added[1]->fText.find("selection of the active dataset has no variables"), std::string::npos);
  EXPECT_FALSE(source.FatalError());
}
