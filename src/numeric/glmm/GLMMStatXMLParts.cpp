#include "numeric/glmm/GLMMStatXMLParts.h"

#include "numeric/glmm/GLMMXMLWriter.h"
#include "numeric/math/MCEmmeansSpec.h"

namespace MCGLMM_850 {

std::string GLMMStatXMLParts::FixedKey(std::size_t i) { return "B" + std::to_string(i); }

std::string GLMMStatXMLParts::RandomKey(int block, std::size_t j) {
  return "G" + std::to_string(block) + "." + std::to_string(j);
}

void GLMMStatXMLParts::Statistic(GLMMXMLWriter& xml, const std::string& name, const std::string& value) {
  xml.NameValue("Statistic", name, value);
}

void GLMMStatXMLParts::Message(GLMMXMLWriter& xml, const std::string& key, const std::vector<std::string>& arguments) {
  xml.Open("Message");
  xml.Open("PrintableList");
  xml.Attribute("pattern", key);
  xml.Attribute("isKey", true);
  for (const std::string& argument : arguments) {
    xml.Open("PrintableValue");
    xml.Attribute("storage", "string");
    xml.Attribute("value", argument);
    xml.Close();
  }
  xml.Close();
  xml.Close();
}

int GLMMStatXMLParts::FactorRequestNumber(const std::vector<MCMath_850::MCEmmeansSpec>& requests, int r) {
  const auto at = [](int i) { return static_cast<std::size_t>(i); };
  if (r < static_cast<int>(requests.size()) && requests[at(r)].GetFactors().empty()) return -1;
  int number = 0;
  for (int k = 0; k < r && k < static_cast<int>(requests.size()); ++k) {
    if (!requests[at(k)].GetFactors().empty()) ++number;
  }
  return number;
}

}  // namespace MCGLMM_850
