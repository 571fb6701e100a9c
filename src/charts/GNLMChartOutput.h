#pragma once

#include "results/GNLMOutputStats.h"

class BpProcedure;
class ZORV_DataSource;

// The charts of the model viewer, each drawn at its place among the tables.
// This version draws none of them.
class GNLMChartOutput {
 public:
  GNLMChartOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats& stats);
  ~GNLMChartOutput();
  GNLMChartOutput(const GNLMChartOutput&) = delete;
  GNLMChartOutput& operator=(const GNLMChartOutput&) = delete;

  void createPredictedByObservedChart();
  void createFixedEffectsChart();
  void createFixedCoefficientsChart();
  void createEMMeansChart();
  void createCustomEffectsChart(const GNLMOutputStats::EMMEANSCustomData& custom);
  void createContrastsChart(const GNLMOutputStats::EMMEANSCustomData& custom);
};
