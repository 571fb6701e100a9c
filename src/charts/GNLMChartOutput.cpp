#include "charts/GNLMChartOutput.h"

GNLMChartOutput::GNLMChartOutput(BpProcedure*, ZORV_DataSource*, const GNLMOutputStats&) {}

GNLMChartOutput::~GNLMChartOutput() = default;

void GNLMChartOutput::createPredictedByObservedChart() {}

void GNLMChartOutput::createFixedEffectsChart() {}

void GNLMChartOutput::createFixedCoefficientsChart() {}

void GNLMChartOutput::createEMMeansChart() {}

void GNLMChartOutput::createCustomEffectsChart(const GNLMOutputStats::EMMEANSCustomData&) {}

void GNLMChartOutput::createContrastsChart(const GNLMOutputStats::EMMEANSCustomData&) {}
