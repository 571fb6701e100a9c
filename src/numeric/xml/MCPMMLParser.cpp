#include "numeric/xml/MCPMMLParser.h"

#include <charconv>
#include <cmath>
#include <istream>
#include <iterator>

#include "host/documents/SDOMXMLWrapper.h"
#include "numeric/common/MCMV.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCXML_850 {

using MCCommon_850::MCStatus;
using namespace MCMath_850::MCConst;

namespace {

MCStatus Failed() { return MCStatus(MCCommon_850::MC_MODEL_FILE_ERROR, false); }

std::string Attribute(const SDOMXMLWrapper& element, const std::string& name) {
  std::string value;
  element.GetAttribute(name, value);
  return value;
}

// A number as the writer puts it, whole text and nothing else; false for an
// empty text. Independent of the process locale.
template <typename Number>
bool ReadNumber(const std::string& text, Number& value) {
  const char* last = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), last, value);
  return !text.empty() && result.ec == std::errc() && result.ptr == last;
}

MCMeasureLevel MeasureOfOpType(const std::string& optype) {
  if (optype == "categorical") return MEASURE_NOMINAL;
  if (optype == "ordinal") return MEASURE_ORDINAL;
  return MEASURE_CONTINUOUS;
}

MCVarRole RoleOfUsage(const std::string& usage) {
  if (usage == "target" || usage == "predicted") return ROLE_TARGET;
  if (usage == "analysisWeight") return ROLE_REGRESSION_WEIGHT;
  if (usage == "frequencyWeight") return ROLE_FREQUENCY_WEIGHT;
  if (usage == "active") return ROLE_PREDICTOR;
  return ROLE_NONE;
}

// The value of the field's extension of that name; empty when it has none.
std::string Extension(SDOMXMLWrapper* field, const std::string& name) {
  for (SDOMXMLWrapper* extension : SDOMXMLWrapper::GetChildren(field, "Extension")) {
    if (Attribute(*extension, "name") == name) return Attribute(*extension, "value");
  }
  return std::string();
}

// The variable of one DataField; false when the field cannot be read.
bool ReadField(SDOMXMLWrapper* field, IMCVariable& variable) {
  const std::string name = Attribute(*field, "name");
  if (name.empty()) return false;
  variable = IMCVariable(name, ROLE_NONE, MeasureOfOpType(Attribute(*field, "optype")));
  variable.SetLabel(Attribute(*field, "displayName"));
  int number = 0;
  const std::string recordIndex = Extension(field, "recordIndex");
  if (!recordIndex.empty()) {
    if (!ReadNumber(recordIndex, number)) return false;
    variable.SetRecordIndex(number);
  }
  const bool isString = Attribute(*field, "dataType") == "string";
  const std::string width = Extension(field, "stringWidth");
  if (!width.empty()) {
    if (!ReadNumber(width, number) || number < 0) return false;
    variable.SetStringWidth(number);
  } else if (isString) {
    variable.SetStringWidth(1);
  }
  for (SDOMXMLWrapper* value : SDOMXMLWrapper::GetChildren(field, "Value")) {
    const std::string text = Attribute(*value, "value");
    const std::string display = Attribute(*value, "displayValue");
    double category = MCCommon_850::MCMV::Missing();
    if (!isString && (!ReadNumber(text, category) || !std::isfinite(category))) return false;
    variable.AddCategory(category, display.empty() ? text : display);
  }
  return true;
}

bool Wanted(const IMCVariable& variable, const std::vector<std::string>& names, bool targetsOnly) {
  if (targetsOnly && variable.GetRole() != ROLE_TARGET) return false;
  if (names.empty()) return true;
  for (const std::string& name : names) {
    if (name == variable.GetName()) return true;
  }
  return false;
}

}  // namespace

MCPMMLParser::MCPMMLParser() : fbParsed(false) {}

MCPMMLParser::~MCPMMLParser() = default;

MCStatus MCPMMLParser::ParseToDOM(std::istream& is) {
  fpDocument.reset();
  fbParsed = false;
  const std::string text((std::istreambuf_iterator<char>(is)), std::istreambuf_iterator<char>());
  std::unique_ptr<SDOMXMLWrapper> document(new SDOMXMLWrapper);
  // Only the dictionary and the mining schema are read: the matrices of the
  // model (the covariance of the fixed estimates has a cell for every pair
  // of columns) are not held.
  if (!document->LoadFromString(text, {"DataDictionary", "GeneralRegressionModel/MiningSchema"}) ||
      document->GetName() != "PMML") {
    return Failed();
  }
  SDOMXMLWrapper* dictionary = nullptr;
  if (!document->GetFirstElement("DataDictionary", &dictionary)) return Failed();
  fpDocument = std::move(document);
  fbParsed = true;
  return MCStatus();
}

MCStatus MCPMMLParser::FillVarList(MCVarList& varList, const std::vector<std::string>& names,
                                   bool targetsOnly) const {
  varList.Clear();
  if (!fbParsed) return Failed();
  SDOMXMLWrapper* dictionary = nullptr;
  fpDocument->GetFirstElement("DataDictionary", &dictionary);
  SDOMXMLWrapper* schema = nullptr;
  fpDocument->GetFirstElement("GeneralRegressionModel/MiningSchema", &schema);
  for (SDOMXMLWrapper* field : SDOMXMLWrapper::GetChildren(dictionary, "DataField")) {
    IMCVariable variable;
    if (!ReadField(field, variable)) {
      varList.Clear();
      return Failed();
    }
    for (SDOMXMLWrapper* mining : SDOMXMLWrapper::GetChildren(schema, "MiningField")) {
      if (Attribute(*mining, "name") == variable.GetName()) {
        variable.SetRole(RoleOfUsage(Attribute(*mining, "usageType")));
        break;
      }
    }
    if (Wanted(variable, names, targetsOnly)) varList.AddVariable(variable);
  }
  return MCStatus();
}

}  // namespace MCXML_850
