#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "ChartResources.h"
#include "ChartTestSupport.h"
#include "host/viz/JNIException.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/ViZEditor.h"
#include "host/viz/XMarkupData.h"
#include "host/viz/ZorvJVM.h"

using ChartTestSupport::Count;
using ChartTestSupport::Drawn;

namespace {

const char* const kHistogram =
    "<chart><data><variable source=\"source0\" name=\"X\" role=\"X\"/><variable source=\"source0\" name=\"Y\" "
    "role=\"Y\"/>"
    "</data><graph><interval x=\"X\" y=\"Y\"><binStatistic binCount=\"2\" /></interval></graph></chart>";

// The platform and the editor started for the calling thread.
class StartedEditor {
 public:
  StartedEditor() {
    ZorvJVM::GetInstance()->Reset();
    ViZEditor::GetInstance()->Stop();
    EXPECT_TRUE(ZorvJVM::GetInstance()->StartJVM());
    void* env = nullptr;
    EXPECT_TRUE(ZorvJVM::GetInstance()->AttachCurrentThread(&env));
    EXPECT_TRUE(ViZEditor::GetInstance()->StartEditorHeadless(env));
  }
  ~StartedEditor() {
    ViZEditor::GetInstance()->Stop();
    ZorvJVM::GetInstance()->Reset();
  }
};

std::string Stream(const VarDataProcessor& data) {
  long length = 0;
  char* bytes = data.GetDataStream(length);
  std::string text(bytes, static_cast<std::size_t>(length));
  delete[] bytes;
  return text;
}

VarDataProcessor HistogramData() {
  VarDataProcessor data;
  data.AddDataSource("source0", 0);
  VarDataProcessor::VarInfo x;
  VarDataProcessor::VarInfo y;
  data.AddVariable("source0", "X", &x);
  data.AddVariable("source0", "Y", &y);
  data.SetVariableValue(x, 0, 1.5);
  data.SetVariableValue(y, 0, 4);
  data.SetVariableValue(x, 1, 2.5);
  data.SetVariableValue(y, 1, 6);
  return data;
}

std::string Embedded(const std::string& chart, const std::string& histogram, int fieldType = 2) {
  const std::string stream = Stream(HistogramData());
  return ViZEditor::GetInstance()->EmbedHistogramInGraph(chart, histogram, stream.data(),
                                                         static_cast<long>(stream.size()), fieldType);
}

}  // namespace

TEST(ZorvJVM, StartsWhenItsTemplateFolderIsThereAndAttachesThreads) {
  ZorvJVM* platform = ZorvJVM::GetInstance();
  EXPECT_EQ(platform, ZorvJVM::GetInstance());
  platform->Reset();
  {
    ChartResources bare(false);
    EXPECT_FALSE(platform->StartJVM());
    void* env = &env;
    EXPECT_FALSE(platform->AttachCurrentThread(&env));
    EXPECT_EQ(env, nullptr);
  }
  EXPECT_TRUE(platform->StartJVM());
  EXPECT_TRUE(platform->IsStarted());
  EXPECT_EQ(platform->GetEnv(), nullptr);  // not attached yet
  void* env = nullptr;
  EXPECT_TRUE(platform->AttachCurrentThread(&env));
  EXPECT_NE(env, nullptr);
  EXPECT_EQ(platform->GetEnv(), env);
  void* other = &other;
  std::thread([&] { other = platform->GetEnv(); }).join();
  EXPECT_EQ(other, nullptr);
  // A new start voids the attachments of the last.
  platform->Reset();
  EXPECT_TRUE(platform->StartJVM());
  EXPECT_EQ(platform->GetEnv(), nullptr);
  platform->Reset();
}

TEST(ViZEditor, StartsOnlyInAnAttachedThreadsEnvironment) {
  ZorvJVM::GetInstance()->Reset();
  ViZEditor* editor = ViZEditor::GetInstance();
  editor->Stop();
  EXPECT_FALSE(editor->StartEditorHeadless(nullptr));
  int elsewhere = 0;
  EXPECT_FALSE(editor->StartEditorHeadless(&elsewhere));
  EXPECT_THROW(editor->EmbedHistogramInGraph("<chart/>", kHistogram, "", 0, 2), JNIException);
  StartedEditor started;
  EXPECT_TRUE(editor->IsStartedHeadless());
}

TEST(ViZEditor, LaysTheHistogramWithItsDataIntoTheNodeThatHoldsCharts) {
  StartedEditor started;
  const std::string before = "<chart>\n  <graph>\n    <node x=\"x\" chartSlot=\"true\"/>\n  </graph>\n</chart>\n";
  const std::string result = Embedded(before, kHistogram, 1);
  ASSERT_FALSE(result.empty());
  // The chart around the node is as it was.
  EXPECT_EQ(result.substr(0, result.find("<node")), before.substr(0, before.find("<node")));
  EXPECT_EQ(result.substr(result.find("</node>")), "</node>\n  </graph>\n</chart>\n");
  EXPECT_NE(result.find("<node x=\"x\" chartSlot=\"true\"><embeddedChart fieldType=\"1\"><chart>"), std::string::npos);
  EXPECT_NE(result.find("name=\"X\" role=\"X\"><n row=\"0\">1.5</n><n row=\"1\">2.5</n></variable>"),
            std::string::npos);
  EXPECT_NE(result.find("<source name=\"source0\" rows=\"2\"/>"), std::string::npos);
  // A second embedding replaces the first; a node written open takes it too.
  const std::string again = Embedded(result, kHistogram);
  EXPECT_EQ(Count(again, "<embeddedChart"), 1);
  EXPECT_NE(again.find("fieldType=\"2\""), std::string::npos);
  const std::string open =
      Embedded("<chart><graph><node chartSlot=\"true\"><label variable=\"n\"/></node></graph></chart>", kHistogram);
  EXPECT_NE(open.find("<label variable=\"n\"/><embeddedChart"), std::string::npos);
  // Without such a node there is nothing to embed into.
  EXPECT_EQ(Embedded("<chart><graph><node/></graph></chart>", kHistogram), "");
  // A histogram without its bins is embedded all the same.
  const std::string plain =
      "<chart><data><variable source=\"source0\" name=\"X\"/><variable source=\"source0\" name=\"Y\"/>"
      "</data><graph><interval x=\"X\" y=\"Y\"/></graph></chart>";
  EXPECT_NE(Embedded(before, plain).find("<embeddedChart"), std::string::npos);
}

TEST(ViZEditor, RaisesWhenADocumentOrTheDataCannotBeRead) {
  StartedEditor started;
  ViZEditor* editor = ViZEditor::GetInstance();
  const std::string stream = Stream(HistogramData());
  const long length = static_cast<long>(stream.size());
  const std::string chart = "<chart><graph><node chartSlot=\"true\"/></graph></chart>";
  try {
    editor->EmbedHistogramInGraph("<chart>", kHistogram, stream.data(), length, 2);
    FAIL() << "returned";
  } catch (const JNIException& e) {
    EXPECT_EQ(std::string(e.what()).rfind("the chart cannot be read: line 1", 0), 0u) << e.what();
  }
  EXPECT_THROW(editor->EmbedHistogramInGraph(chart, "<chart><pie/></chart>", stream.data(), length, 2), JNIException);
  EXPECT_THROW(editor->EmbedHistogramInGraph(chart, kHistogram, "<data><n/></data>", 17, 2), JNIException);
  EXPECT_THROW(editor->EmbedHistogramInGraph(chart, kHistogram, nullptr, 5, 2), JNIException);
  EXPECT_THROW(editor->EmbedHistogramInGraph(chart, kHistogram, stream.data(), -1, 2), JNIException);
}

TEST(VarDataProcessor, SerializesItsDataAsChartMarkup) {
  VarDataProcessor data = HistogramData();
  VarDataProcessor::VarInfo label;
  data.AddDataSource("other", 3);
  data.AddVariable("other", "label", &label);
  data.SetStringVariableValue(label, 2, "a < b & \"c\"");
  const std::string stream = Stream(data);
  EXPECT_EQ(stream.rfind("<data><source name=\"source0\" rows=\"2\"/><source name=\"other\" rows=\"3\"/>", 0), 0u);
  OmChartData back;
  XMarkupError error;
  ASSERT_TRUE(XMarkupData::Read(stream, back, error)) << error.ToText();
  ASSERT_EQ(back.fvSources.size(), 2u);
  EXPECT_EQ(back.fvSources[1].fRowCount, 3);
  EXPECT_EQ(back.fvSources[1].fvVariables[0].fCells.at(2).fText, "a < b & \"c\"");
  EXPECT_EQ(back.fvSources[0].fvVariables[0].fCells.at(1).fNumber, 2.5);
  EXPECT_FALSE(XMarkupData::Read("<chart/>", back, error));
  EXPECT_FALSE(
      XMarkupData::Read("<data><variable source=\"s\" name=\"v\"><n row=\"0\">x</n></variable></data>", back, error));
  // An empty processor gives an empty <data/>.
  EXPECT_EQ(Stream(VarDataProcessor()), "<data/>");
}
