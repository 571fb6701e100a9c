#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace MCMath_850 {
class MCEmmeansSpec;
}

namespace MCGLMM_850 {

class GLMMXMLWriter;

// The pieces of the StatXML document that more than one of its parts
// writes: statistics, messages, the label maps' ids and keys, and the
// numbering of the marginal means requests.
class GLMMStatXMLParts {
 public:
  // The ids of the two label maps, fixed and random parameters.
  static const int kFixedMap = 0;
  static const int kRandomMap = 1;

  // The keys of a fixed parameter and of a random block's parameter in
  // their label maps.
  static std::string FixedKey(std::size_t i);
  static std::string RandomKey(int block, std::size_t j);

  static void Statistic(GLMMXMLWriter& xml, const std::string& name, const std::string& value);
  // A message as a key of the string tables with its arguments.
  static void Message(GLMMXMLWriter& xml, const std::string& key, const std::vector<std::string>& arguments);

  // The number of a marginal means request among the requests of factors,
  // which are the ones the build settings list: the overall request (no
  // factors) has no number of its own and gives -1. Asked for one past the
  // last request, it counts the requests of factors.
  static int FactorRequestNumber(const std::vector<MCMath_850::MCEmmeansSpec>& requests, int r);
};

}  // namespace MCGLMM_850
