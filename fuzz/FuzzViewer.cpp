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

void Show(const std::string& pmml, const std::string& statXML) {
  ZORV_Dataset& data = Clinic();
  CFMetaData metaData(data);
  OmDocument document;
  ZORV_Session::Current().BeginCommand();
  {
    BpProcedure procedure(document.fRoot.AddHeading("Model"), "Model", "Generalized Linear Mixed Models");
    procedure.SetDataSource(&data);
    std::unique_ptr<CFProcCustom> plugIn(GetCFProcCustom());
    plugIn->SetProcedure(&procedure);
    plugIn->SetDataSource(&data);
    plugIn->SetMetaData(&metaData);
    plugIn->ProcessOutputXML(std::vector<std::string>{pmml},
                             std::vector<CFStatXMLInfoBlock>{CFStatXMLInfoBlock("fuzz.xml", statXML)}, std::string());
    plugIn->ProcessOutputJSON();
  }
  OmTextRenderer().Render(document);
  ZORV_Session::Current().BeginCommand();
}

}  // namespace fuzzviewer
