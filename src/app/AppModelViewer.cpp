#include "app/AppModelViewer.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/MixExports.h"
#include "host/cf/CFMetaData.h"
#include "host/cf/CFStatXMLInfoBlock.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/files/BEPesRepos.h"
#include "host/output/BpComposite.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/OmDocument.h"
#include "viewer/GNLMExports.h"
#include "viewer/GNLMProcCustom.h"

namespace {

// The documents of one fitted model.
struct ModelDocuments {
  std::string fPMML;  // empty when the fit wrote no model file
  CFStatXMLInfoBlock fStatXML;
  std::vector<ZORV_Session::SplitValue> fvSplit;
};

// The name of a document's root element, read from its text without
// parsing the whole document: the first tag that is not a declaration,
// processing instruction or comment.
std::string RootName(const std::string& text) {
  std::size_t at = 0;
  while ((at = text.find('<', at)) != std::string::npos) {
    if (at + 1 < text.size() && (text[at + 1] == '?' || text[at + 1] == '!')) {
      ++at;
      continue;
    }
    std::size_t end = at + 1;
    while (end < text.size() && text[end] != '>' && text[end] != '/' && text[end] != ' ' && text[end] != '\t' &&
           text[end] != '\r' && text[end] != '\n') {
      ++end;
    }
    std::string name = text.substr(at + 1, end - at - 1);
    const std::size_t colon = name.find(':');
    return colon == std::string::npos ? name : name.substr(colon + 1);
  }
  return std::string();
}

// Each StatXML document with the model file handed over before it for the
// same fit, in the order the fits ran.
std::vector<ModelDocuments> CollectModels() {
  std::vector<ModelDocuments> models;
  const BEPesRepos::FileData* pModelFile = nullptr;
  for (const BEPesRepos::FileData& file : BEPesRepos::GetFiles()) {
    if (file.fKind != BEPesRepos::KIND_XML || !file.fbDeliver || !file.fbReadable) continue;
    const std::string root = RootName(file.fContent);
    if (root == "PMML") {
      pModelFile = &file;
    } else if (root == "StatXML") {
      ModelDocuments model;
      if (pModelFile != nullptr) model.fPMML = pModelFile->fContent;
      model.fStatXML = CFStatXMLInfoBlock(file.fName, file.fContent);
      model.fvSplit = file.fvSplit;
      models.push_back(std::move(model));
      pModelFile = nullptr;
    }
  }
  return models;
}

// A heading titled by the split, under the model viewer's heading.
OmHeading* SplitHeading(BpHeading& parent, const std::vector<ZORV_Session::SplitValue>& split) {
  ZORV_Session& session = ZORV_Session::Current();
  session.SetCurrentSplit(split);
  BpComposite title("Split File [%1 = %2:, ^1 = ^2:]1", true);
  title.SplitList();
  title.Finish();
  BpHeading heading = parent.Heading(title);
  session.ClearCurrentSplit();
  return heading.GetOmHeading();
}

void RemoveIfEmpty(OmHeading& parent, const OmHeading* child) {
  if (child == nullptr || !child->fvItems.empty()) return;
  auto& items = parent.fvItems;
  items.erase(std::remove_if(items.begin(), items.end(),
                             [child](const OmItem& item) { return item.fpHeading.get() == child; }),
              items.end());
}

// The model's documents are handed over to the plug-in: a model file of a
// fixed factor of many levels holds tens of megabytes of covariance cells,
// which are not copied again.
void ShowModel(BpProcedure& procedure, BpHeading& viewerHeading, ZORV_Dataset& data, CFMetaData& metaData,
               ModelDocuments model) {
  OmHeading* parent = viewerHeading.GetOmHeading();
  OmHeading* heading = model.fvSplit.empty() ? parent : SplitHeading(viewerHeading, model.fvSplit);
  if (heading == nullptr) return;
  {
    BpProcedure viewer(*heading, procedure.GetTitle(), "Generalized Linear Mixed Models");
    viewer.SetDataSource(&data);
    std::unique_ptr<CFProcCustom> plugIn(GetCFProcCustom());
    plugIn->SetProcedure(&viewer);
    plugIn->SetDataSource(&data);
    plugIn->SetMetaData(&metaData);
    std::vector<std::string> modelFiles;
    modelFiles.push_back(std::move(model.fPMML));
    std::vector<CFStatXMLInfoBlock> statXML;
    statXML.push_back(std::move(model.fStatXML));
    plugIn->ProcessOutputXML(modelFiles, statXML, std::string());
    plugIn->ProcessOutputJSON();
  }
  if (heading != parent) RemoveIfEmpty(*parent, heading);
}

}  // namespace

void AppModelViewer::Run(BpProcedure& procedure, ZORV_Dataset& data) {
  std::vector<ModelDocuments> models = CollectModels();
  if (models.empty()) return;
  CFMetaData metaData(data);
  display_result_model = display_output;
  {
    BpHeading viewerHeading = procedure.Heading(BpString("Model Viewer", true));
    for (ModelDocuments& model : models) ShowModel(procedure, viewerHeading, data, metaData, std::move(model));
    RemoveIfEmpty(*procedure.GetOmHeading(), viewerHeading.GetOmHeading());
  }
  display_result_model = false;
}
