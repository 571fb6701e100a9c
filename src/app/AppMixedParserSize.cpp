#include "app/AppMixedParser.h"

#include <cmath>
#include <string>
#include <unordered_set>

#include "app/AppCommandReader.h"
#include "host/data/ZORV_Dataset.h"

// What an unstructured covariance matrix needs, estimated from the data
// before anything is built: its parameters grow with the square of its
// levels and the fit's memory with the fourth power.

namespace {

const int kUnstructured = 15;
const int kUnstructuredCorrelations = 16;

// The fit keeps, per covariance parameter, the derivative of the matrix
// (levels squared numbers) and, over all parameters, a few square matrices
// of the parameters (information, its inverse, a work copy); 20 bytes per
// number is what a fit was measured to need, work space included.
double EstimatedBytes(double levels, double parameters) {
  return 20.0 * (parameters * levels * levels + 3.0 * parameters * parameters);
}

std::string Gigabytes(double bytes) {
  const double gb = bytes / (1024.0 * 1024.0 * 1024.0);
  return gb >= 10.0 ? std::to_string(static_cast<long long>(std::llround(gb)))
                    : std::to_string(static_cast<long long>(std::llround(gb * 10.0)) / 10) + "." +
                          std::to_string(static_cast<long long>(std::llround(gb * 10.0)) % 10);
}

}  // namespace

long AppMixedParser::DistinctCombinations(const std::vector<int>& columns) const {
  std::unordered_set<std::string> seen;
  const long cases = fData.GetCaseCount();
  for (long row = 0; row < cases; ++row) {
    std::string key;
    bool missing = false;
    for (int column : columns) {
      if (fData.IsSysMissing(row, column)) {
        missing = true;
        break;
      }
      if (IsNumeric(column)) {
        const double value = fData.GetNum(row, column);
        key.append(reinterpret_cast<const char*>(&value), sizeof value);
      } else {
        key += fData.GetString(row, column, false);
        key += '\x1f';
      }
    }
    if (!missing) seen.insert(key);
  }
  return static_cast<long>(seen.size());
}

long AppMixedParser::RandomBlockLevels(const AppMixedCommand::RandomBlockData& block) const {
  long levels = 0;
  for (const AppMixedCommand::TermData& term : block.fvTerms) {
    long columns = 1;
    for (std::size_t i = 0; i < fCommand.fvFactors.size() && i < term.fvWords.size(); ++i) {
      if (term.fvWords[i] != 0) columns *= std::max(1L, DistinctCombinations({fCommand.fvFactors[i]}));
      if (columns > kMaxStructureLevels) return columns;
    }
    levels += columns;
  }
  return levels;
}

void AppMixedParser::CheckStructureSize(AppCommandReader& reader, const AppToken& at, int structure, long levels,
                                        const std::string& over) const {
  if (structure != kUnstructured && structure != kUnstructuredCorrelations) return;
  const double d = static_cast<double>(levels);
  const double parameters = d * (d + 1.0) / 2.0;
  const double bytes = EstimatedBytes(d, parameters);
  if (levels <= kMaxStructureLevels && bytes <= kMaxStructureBytes) return;
  const std::string keyword = structure == kUnstructured ? "UN" : "UNR";
  reader.FailAt(at, "STRUCTURE=" + keyword + " over " + std::to_string(levels) + " levels of " + over + " has " +
                        std::to_string(static_cast<long long>(parameters)) +
                        " covariance parameters and would need about " + Gigabytes(bytes) +
                        " GB of memory to fit, more than the " + Gigabytes(kMaxStructureBytes) +
                        " GB a covariance structure may use; use fewer levels or a structure with fewer parameters");
}

void AppMixedParser::RefuseRandomParameters(AppCommandReader& reader, const AppToken& at, long parameters) {
  reader.FailAt(at, "the random blocks have at least " + std::to_string(parameters) +
                        " covariance parameters, more than the " + std::to_string(kMaxRandomParameters) +
                        " a model may have: the fit's memory grows with the square of their number and its work "
                        "with the cube; put effects of the same subjects in one block, or leave some out");
}
