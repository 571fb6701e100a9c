#include "FuzzViewer.h"

#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <vector>

#include "host/cf/CFMetaData.h"
#include "host/cf/CFProcCustom.h"
#include "host/cf/CFStatXMLInfoBlock.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/io/DataFileLoader.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/render/OmTextRenderer.h"
#include "viewer/GNLMExports.h"

// The viewer reads documents that the engine wrote for the data at hand, so
// the reader asserts that the fields they name are variables of the data:
// the target, the trials field and the repeated measures. A generated
// document that names another field is outside that contract, not a
// finding. The two viewer targets are linked with the procedure's
// assertion handler wrapped (see fuzz/CMakeLists.txt): the three
// assertions of that contract throw, and Show ends the input there; every
// other assertion goes to the procedure's handler and aborts as it does in
// the program.
namespace {

struct OutsideTheContract {};

const char* const kContractAssertions[] = {
    "buildSettingsStruct.fTargetIndex >= 0",
    "buildSettingsStruct.fTrialsIndex >= 0",
    "repeatMeasVarStruct.fRepMeasInd >= 0",
};

}  // namespace

// MIXAssertFailed(const char*, const char*, int), by its linker name.
extern "C" [[noreturn]] void __real__Z15MIXAssertFailedPKcS0_i(const char* text, const char* file, int line);

extern "C" [[noreturn]] void __wrap__Z15MIXAssertFailedPKcS0_i(const char* text, const char* file, int line) {
  for (const char* contract : kContractAssertions) {
    if (text != nullptr && std::strcmp(text, contract) == 0) throw OutsideTheContract();
  }
  __real__Z15MIXAssertFailedPKcS0_i(text, file, line);
}

namespace fuzzviewer {

namespace {

std::string FixturePath(const std::string& name) {
  return std::string(GLMIX_SOURCE_DIR) + "/tests/data/documents/glmm/" + name;
}

ZORV_Dataset& Clinic() {
  static ZORV_Dataset* data = [] {
    ZORV_Dataset* made = new ZORV_Dataset();
    DataFileLoader::Load(FixturePath("clinic.csv"), *made);
    return made;
  }();
  return *data;
}

}  // namespace

const std::string& Fixture(const std::string& name) {
  static std::map<std::string, std::string> texts;
  auto found = texts.find(name);
  if (found != texts.end()) return found->second;
  std::ifstream in(FixturePath(name), std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return texts[name] = text.str();
}

bool Show(const std::string& pmml, const std::string& statXML) {
  ZORV_Dataset& data = Clinic();
  CFMetaData metaData(data);
  OmDocument document;
  ZORV_Session::Current().BeginCommand();
  try {
    BpProcedure procedure(document.fRoot.AddHeading("Model"), "Model", "Generalized Linear Mixed Models");
    procedure.SetDataSource(&data);
    std::unique_ptr<CFProcCustom> plugIn(GetCFProcCustom());
    plugIn->SetProcedure(&procedure);
    plugIn->SetDataSource(&data);
    plugIn->SetMetaData(&metaData);
    plugIn->ProcessOutputXML(std::vector<std::string>{pmml},
                             std::vector<CFStatXMLInfoBlock>{CFStatXMLInfoBlock("fuzz.xml", statXML)}, std::string());
    plugIn->ProcessOutputJSON();
  } catch (const OutsideTheContract&) {
    ZORV_Session::Current().BeginCommand();
    return false;
  }
  OmTextRenderer().Render(document);
  ZORV_Session::Current().BeginCommand();
  return true;
}

}  // namespace fuzzviewer
