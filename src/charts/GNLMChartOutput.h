#pragma once

#include "results/GNLMOutputStats.h"

class BpProcedure;
class ZORV_DataSource;

// The charts of the model viewer, drawn from the result model between its
// tables. Each chart starts from a finished chart document, a built-in
// template or a template file, patches its text where the template carries
// placeholders, fills the chart's data and sends it to the output under
// the heading that is open. A chart whose records the model lacks is left
// out without a word.
//
// The model viewer's output makes one object per model and calls the
// operations in its order: predicted by observed, fixed effects, fixed
// coefficients (which uses the distribution that the fixed effects chart
// stored), the marginal means; each block of marginal means asked for
// makes objects of its own for its means and its contrasts.
class GNLMChartOutput {
 public:
  class Data;

  // The three objects are borrowed and must outlive this one.
  GNLMChartOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats& stats);
  ~GNLMChartOutput();
  GNLMChartOutput(const GNLMChartOutput&) = delete;
  GNLMChartOutput& operator=(const GNLMChartOutput&) = delete;

  // Observed against predicted target values.
  void createPredictedByObservedChart();
  // The tested fixed effects as a diagram around the target, with the
  // target's histogram in the target node.
  void createFixedEffectsChart();
  // The fixed coefficients as a diagram around the target.
  void createFixedCoefficientsChart();
  // The means of the most significant fixed effects, at most eleven charts
  // under a heading of their own.
  void createEMMeansChart();
  // The means of one block of marginal means asked for.
  void createCustomEffectsChart(const GNLMOutputStats::EMMEANSCustomData& custom);
  // The contrasts of one block: the pairwise network, or the deviation or
  // simple contrasts as bars from a reference line.
  void createContrastsChart(const GNLMOutputStats::EMMEANSCustomData& custom);

  // What the chart operations share; for the tests of its operations.
  Data& GetData() { return *fpData; }

 private:
  Data* fpData;
};
