#include "host/cf/CFProcCustom.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/cf/CFMetaData.h"

namespace {

// Stands for a procedure's plug-in: records what the host handed it.
class RecordingPlugIn : public CFProcCustom {
 public:
  RecordingPlugIn() = default;
  RecordingPlugIn(BpProcedure* procedure, ProcedureDataSource* dataSource) : CFProcCustom(procedure, dataSource) {}
  ~RecordingPlugIn() override { ++fDestroyed; }

  bool ProcessSyntax(const CommandSpec*, const CommandDescriptor*) override {
    fCalls.push_back("syntax");
    return true;
  }
  bool ProcessOutputXML(const std::string& pmml, const CFStatXMLInfoBlock& block) override {
    fCalls.push_back("one:" + pmml + "|" + block.fStatXML);
    return !pmml.empty();
  }
  bool ProcessOutputXML(const std::vector<std::string>& vPMMLStr, const std::vector<CFStatXMLInfoBlock>& vBlocks,
                        const std::string& summary) override {
    fCalls.push_back("all:" + summary);
    return ProcessOutputXML(vPMMLStr.at(0), vBlocks.at(0));
  }
  void SetStatJSON(const std::vector<std::string>& vStatJSON) override {
    fCalls.push_back("json:" + std::to_string(vStatJSON.size()));
  }
  bool ProcessOutputJSON() override {
    fCalls.push_back("outputjson");
    return true;
  }

  CFMetaData* MetaDataSeenByDerivedClass() const { return fpMetaData; }

  std::vector<std::string> fCalls;
  static int fDestroyed;
};

int RecordingPlugIn::fDestroyed = 0;

}  // namespace

TEST(CFProcCustom, StartsWithNoHostObjects) {
  RecordingPlugIn plugIn;
  EXPECT_EQ(plugIn.GetProcedure(), nullptr);
  EXPECT_EQ(plugIn.GetDataSource(), nullptr);
  EXPECT_EQ(plugIn.GetMetaData(), nullptr);
}

TEST(CFProcCustom, HoldsButDoesNotOwnTheHostObjects) {
  BpProcedure* procedure = reinterpret_cast<BpProcedure*>(0x10);
  ProcedureDataSource* dataSource = reinterpret_cast<ProcedureDataSource*>(0x20);
  CFMetaData meta;
  {
    RecordingPlugIn plugIn(procedure, dataSource);
    EXPECT_EQ(plugIn.GetProcedure(), procedure);
    EXPECT_EQ(plugIn.GetDataSource(), dataSource);
    plugIn.SetMetaData(&meta);
    EXPECT_EQ(plugIn.MetaDataSeenByDerivedClass(), &meta);
    plugIn.SetProcedure(nullptr);
    plugIn.SetDataSource(nullptr);
    EXPECT_EQ(plugIn.GetProcedure(), nullptr);
    EXPECT_EQ(plugIn.GetDataSource(), nullptr);
  }
  EXPECT_EQ(meta.FieldCount(), 0);
}

TEST(CFProcCustom, TheHostDrivesAPlugInThroughTheBase) {
  int destroyedBefore = RecordingPlugIn::fDestroyed;
  RecordingPlugIn* concrete = new RecordingPlugIn;
  std::unique_ptr<CFProcCustom> plugIn(concrete);
  EXPECT_TRUE(plugIn->ProcessSyntax(nullptr, nullptr));
  plugIn->SetStatJSON({"{}"});
  EXPECT_TRUE(plugIn->ProcessOutputXML({"<PMML/>"}, {CFStatXMLInfoBlock("m", "<StatXML/>")}, ""));
  EXPECT_FALSE(plugIn->ProcessOutputXML("", CFStatXMLInfoBlock()));
  EXPECT_TRUE(plugIn->ProcessOutputJSON());
  EXPECT_EQ(concrete->fCalls, (std::vector<std::string>{"syntax", "json:1", "all:", "one:<PMML/>|<StatXML/>",
                                                        "one:|", "outputjson"}));
  plugIn.reset();
  EXPECT_EQ(RecordingPlugIn::fDestroyed, destroyedBefore + 1);
}
