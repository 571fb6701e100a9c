#include "FuzzViewer.h"

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

// The viewer reads documents that the engine wrote for the data at hand.
// Its assertions guard the agreement between those documents and what the
// viewer expects of them (the fields they name are variables of the data,
// each block of results answers a request, ...), and a breach ends the
// program by design. A generated document can break that agreement at will,
// so the two viewer targets are linked with the procedure's assertion
// handler wrapped (see fuzz/CMakeLists.txt): an assertion throws, Show ends
// the input there, and the input is not kept. What counts as a finding
// there is everything else: a memory error, undefined behaviour, a leak, a
// hang or any other crash.
namespace {

struct OutsideTheContract {};

}  // namespace

extern "C" [[noreturn]] void __wrap__Z15MIXAssertFailedPKcS0_i(const char*, const char*, int) {
  throw OutsideTheContract();
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
