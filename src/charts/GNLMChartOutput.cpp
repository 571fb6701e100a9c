#include "charts/GNLMChartOutput.h"

#include "charts/GNLMChartOutputData.h"

// The chart operations stand in the files of their kind of chart:
// GNLMChartOutputDistribution.cpp (predicted by observed), ...Effects.cpp
// (the diagrams), ...Means.cpp, ...Contrasts.cpp and ...Pairwise.cpp.

GNLMChartOutput::GNLMChartOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource,
                                 const GNLMOutputStats& stats)
    : fpData(new Data(pProcedure, pDataSource, stats)) {}

GNLMChartOutput::~GNLMChartOutput() { delete fpData; }
