#include "OmRenderSample.h"

#include <cstdio>
#include <utility>

#include "host/viz/XChartRenderer.h"

namespace {

OmDimension MakeDimension(const std::string& name, OmDimension::Place place, bool showName,
                          std::vector<OmDimensionNode> nodes) {
  OmDimension dim;
  dim.fName.fText = name;
  dim.fPlace = place;
  dim.fbShowName = showName;
  dim.fRoot.fbIsGroup = true;
  dim.fRoot.fvChildren = std::move(nodes);
  return dim;
}

std::string Fixed(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string text = buffer;
  // Fractions are shown without their leading zero, as in ".045".
  if (text.rfind("0.", 0) == 0) text.erase(0, 1);
  if (text.rfind("-0.", 0) == 0) text.erase(1, 1);
  return text;
}

void AddEstimatesTable(OmHeading& heading) {
  OmTable& t = heading.AddTable();
  t.fTitle.fText = "Fixed Parameter Estimates";
  t.fTitle.fvFootnotes = {0};
  t.fSubType = "Parameter Estimates";
  t.fvFootnotes = {"Probability distribution: Normal; link function: Identity.",
                   "This parameter is set to zero because it is redundant.",
                   "Redundant parameter"};
  t.fvDimensions.push_back(MakeDimension("Split", OmDimension::LAYER, true,
                                         {OmRenderSample::Category("Sex = Female"), OmRenderSample::Category("Sex = Male")}));
  t.fvDimensions.push_back(MakeDimension(
      "Parameter", OmDimension::ROW, false,
      {OmRenderSample::Category("(Intercept)"),
       OmRenderSample::Group("Treatment", {OmRenderSample::Category("[Treatment=Low dose]"),
                                           OmRenderSample::Category("[Treatment=High dose]", {1})}),
       OmRenderSample::Category("Days"),
       OmRenderSample::Category("Days * [Treatment=Low dose] (interaction of the time trend with the low dose)")}));
  t.fvDimensions.push_back(MakeDimension(
      "Statistics", OmDimension::COLUMN, false,
      {OmRenderSample::Category("Estimate"), OmRenderSample::Category("Std. Error"),
       OmRenderSample::Group("Test", {OmRenderSample::Category("t"), OmRenderSample::Category("df"),
                                      OmRenderSample::Category("Sig.")}),
       OmRenderSample::Group("95% Confidence Interval",
                             {OmRenderSample::Category("Lower Bound"), OmRenderSample::Category("Upper Bound")})}));

  // Per layer and parameter: estimate, standard error, t, df, sig, lower, upper.
  const double values[2][5][7] = {
      {{251.405, 6.825, 36.838, 17.0, 0.0, 237.006, 265.804},
       {-12.250, 4.100, -2.988, 17.0, 0.008, -20.900, -3.600},
       {0, 0, 0, 0, 0, 0, 0},
       {10.467, 1.546, 6.771, 17.0, 0.0, 7.206, 13.729},
       {-1.875, 0.912, -2.056, 17.0, 0.055, -3.799, 0.049}},
      {{262.110, 7.402, 35.411, 15.0, 0.0, 246.333, 277.887},
       {-3.020, 5.010, -0.603, 15.0, 0.556, -13.699, 7.659},
       {0, 0, 0, 0, 0, 0, 0},
       {9.874, 1.602, 6.164, 15.0, 0.0, 6.460, 13.288},
       {-0.412, 1.030, -0.400, 15.0, 0.695, -2.608, 1.784}}};
  for (int layer = 0; layer < 2; ++layer) {
    for (int row = 0; row < 5; ++row) {
      const double* v = values[layer][row];
      for (int col = 0; col < 7; ++col) {
        OmCell cell;
        if (row == 2) {
          // The redundant parameter: zero estimate with a note, no statistics.
          if (col == 0) {
            cell = OmRenderSample::Number(0, "0", "F1.0");
            cell.fContent.fvFootnotes = {2};
          } else if (col == 1) {
            cell = OmRenderSample::Number(0, "0", "F1.0");
          } else {
            cell = OmRenderSample::Missing();
          }
        } else if (col == 3) {
          cell = OmRenderSample::Number(v[col], Fixed(v[col], 0), "F3.0");
        } else {
          cell = OmRenderSample::Number(v[col], Fixed(v[col], 3));
        }
        t.fCells[{layer, row, col}] = cell;
      }
    }
  }
  OmText caption;
  caption.fText = "Dep variable is Reaction";
  t.fvCaptions.push_back(caption);
  OmText note;
  note.fText = "Reg weight is Precision";
  t.fvNotes.push_back(note);
}

void AddTestsTable(OmHeading& heading) {
  OmTable& t = heading.AddTable();
  t.fTitle.fText = "Type III Tests of Fixed Effects";
  t.fSubType = "Tests of Fixed Effects";
  // The split stands outside the source by its order, though made after it.
  t.fvDimensions.push_back(MakeDimension("Source", OmDimension::ROW, true,
                                         {OmRenderSample::Category("(Intercept)"), OmRenderSample::Category("Treatment"),
                                          OmRenderSample::Category("Days"), OmRenderSample::Category("Days * Treatment")}));
  t.fvDimensions.push_back(MakeDimension("Split", OmDimension::ROW, true,
                                         {OmRenderSample::Category("Sex = Female"), OmRenderSample::Category("Sex = Male")}));
  t.fvDimensions.back().fOrder = 2;
  t.fvDimensions.push_back(MakeDimension("Statistics", OmDimension::COLUMN, false,
                                         {OmRenderSample::Category("Numerator DF"),
                                          OmRenderSample::Category("Denominator DF"),
                                          OmRenderSample::Category("F Value"), OmRenderSample::Category("Significance")}));
  const double values[2][4][4] = {{{1, 17, 1357.027, 0.0}, {1, 17, 8.928, 0.008}, {1, 17, 45.847, 0.0}, {1, 17, 4.227, 0.055}},
                                  {{1, 15.5, 1253.9, 0.0}, {1, 15.5, 0.363, 0.556}, {1, 15.5, 37.994, 0.0}, {1, 15.5, 0.16, 0.695}}};
  for (int split = 0; split < 2; ++split) {
    for (int source = 0; source < 4; ++source) {
      const double* v = values[split][source];
      t.fCells[{source, split, 0}] = OmRenderSample::Number(v[0], Fixed(v[0], 0), "F5.0");
      t.fCells[{source, split, 1}] =
          split == 0 ? OmRenderSample::Number(v[1], Fixed(v[1], 0), "F5.0") : OmRenderSample::Number(v[1], Fixed(v[1], 3));
      t.fCells[{source, split, 2}] = OmRenderSample::Number(v[2], Fixed(v[2], 3));
      t.fCells[{source, split, 3}] = OmRenderSample::Number(v[3], Fixed(v[3], 3), "F5.3");
    }
  }
  OmText caption;
  caption.fText = "Dep variable is Reaction";
  t.fvCaptions.push_back(caption);
}

void AddSummaryTable(OmHeading& heading) {
  OmTable& t = heading.AddTable();
  t.fTitle.fText = "Model Summary";
  t.fSubType = "ModelSummary";
  t.fMinDataColumnWidth = 150;
  OmDimensionNode criterion = OmRenderSample::Group(
      "Information Criterion", {OmRenderSample::Category("Akaike Corrected"), OmRenderSample::Category("Bayesian")});
  t.fvDimensions.push_back(MakeDimension(
      "Content", OmDimension::ROW, false,
      {OmRenderSample::Category("Target"), OmRenderSample::Category("Probability Distribution"),
       OmRenderSample::Category("Link Function"), criterion}));
  t.fCells[{0}] = OmRenderSample::Text("Reaction time (ms)");
  t.fCells[{1}] = OmRenderSample::Text("Normal");
  t.fCells[{2}] = OmRenderSample::Text("Identity: \xce\xbc = \xce\xb7");
  t.fCells[{3}] = OmRenderSample::Number(1757.834, "1757.834");
  t.fCells[{4}] = OmRenderSample::Number(1767.321, "1767.321");
  OmText caption;
  caption.fText = "Information Criteria, log likelihood 1751.752 (smaller is better)";
  t.fvCaptions.push_back(caption);
}

void AddCorrelationTable(OmHeading& heading) {
  OmTable& t = heading.AddTable();
  t.fTitle.fText = "Fixed Correlation Matrix";
  t.fSubType = "Correlation Matrix";
  const std::vector<std::string> labels = {"(Intercept)", "[Treatment=Low dose]", "[Treatment=High dose]", "Days",
                                           "Days * [Treatment=Low dose]"};
  std::vector<OmDimensionNode> rows, columns;
  for (const auto& label : labels) {
    rows.push_back(OmRenderSample::Category(label));
    columns.push_back(OmRenderSample::Category(label));
  }
  t.fvDimensions.push_back(MakeDimension("Parameter", OmDimension::ROW, true, rows));
  t.fvDimensions.push_back(MakeDimension("Parameter", OmDimension::COLUMN, false, columns));
  t.fvFootnotes = {"Redundant correlation"};
  const double r[5][5] = {{1, -0.602, 0, -0.452, 0.301},
                          {-0.602, 1, 0, 0.272, -0.500},
                          {0, 0, 0, 0, 0},
                          {-0.452, 0.272, 0, 1, -0.666},
                          {0.301, -0.500, 0, -0.666, 1}};
  for (int i = 0; i < 5; ++i) {
    for (int j = 0; j < 5; ++j) {
      if (i == 2 || j == 2) {
        OmCell cell = OmRenderSample::Missing("F5.3");
        cell.fContent.fvFootnotes = {0};
        t.fCells[{i, j}] = cell;
      } else if (i == j) {
        t.fCells[{i, j}] = OmRenderSample::Number(1, "1", "F1.0");
      } else {
        t.fCells[{i, j}] = OmRenderSample::Number(r[i][j], Fixed(r[i][j], 3), "F5.3");
      }
    }
  }
}

// A small chart, drawn by the chart library from markup and data.
void AddChart(OmHeading& heading) {
  OmChart& chart = heading.AddChart();
  chart.fTitle = "Predicted by Observed";
  chart.fKind = "GLMMPredictedByObserved";
  chart.fMarkup =
      "<chart kind=\"GLMMPredictedByObserved\" width=\"360\" height=\"260\">"
      "<data><variable source=\"s\" name=\"X\" label=\"Observed\"/>"
      "<variable source=\"s\" name=\"Y\" label=\"Predicted\"/></data>"
      "<title><text>Predicted by Observed</text></title>"
      "<graph><point x=\"X\" y=\"Y\"><tooltip><field variable=\"X\"/><field variable=\"Y\"/></tooltip></point>"
      "<lineGuide slope=\"1\" intercept=\"0\"/></graph></chart>";
  OmChartData::Source source;
  source.fName = "s";
  source.fRowCount = 4;
  const double observed[] = {210.5, 245.0, 280.25, 301.0};
  const double predicted[] = {220.0, 239.5, 275.0, 310.75};
  for (const char* name : {"X", "Y"}) {
    OmChartData::Variable variable;
    variable.fName = name;
    for (long row = 0; row < 4; ++row) {
      OmChartData::Cell cell;
      cell.fNumber = name[0] == 'X' ? observed[row] : predicted[row];
      variable.fCells[row] = cell;
    }
    source.fvVariables.push_back(variable);
  }
  chart.fData.fvSources.push_back(source);
  XMarkupError error;
  XChartRenderer::Render(chart.fMarkup, chart.fData, chart.fSvg, error);
}

}  // namespace

OmDimensionNode OmRenderSample::Category(const std::string& label, std::vector<int> footnotes) {
  OmDimensionNode node;
  node.fLabel.fText = label;
  node.fLabel.fvFootnotes = std::move(footnotes);
  return node;
}

OmDimensionNode OmRenderSample::Group(const std::string& label, std::vector<OmDimensionNode> children) {
  OmDimensionNode node;
  node.fLabel.fText = label;
  node.fbIsGroup = true;
  node.fvChildren = std::move(children);
  return node;
}

OmCell OmRenderSample::Number(double value, const std::string& text, const std::string& format) {
  OmCell cell;
  cell.fContent.fText = text;
  cell.fbNumeric = true;
  cell.fValue = value;
  cell.fFormat = format;
  return cell;
}

OmCell OmRenderSample::Missing(const std::string& format) {
  OmCell cell;
  cell.fbNumeric = true;
  cell.fbMissing = true;
  cell.fValue = -1.7976931348623157e308;
  cell.fFormat = format;
  return cell;
}

OmCell OmRenderSample::Text(const std::string& text) {
  OmCell cell;
  cell.fContent.fText = text;
  return cell;
}

OmDocument OmRenderSample::Build() {
  OmDocument doc;
  doc.fTitle = "glmixfit output";
  OmHeading& command = doc.fRoot.AddHeading("Generalized Linear Mixed Model");
  OmFrontEndText& echo = command.AddText();
  echo.fvLines = {"GLMIXFIT Reaction BY Treatment WITH Days", "  /FIXED = Treatment Days Days*Treatment",
                  "  /RANDOM = INTERCEPT Days | SUBJECT(Subject)", "  /PRINT = SOLUTION CORB."};
  command.AddMessage(OmMessage::NOTE, "The file is split by Sex; each split is fitted on its own.");
  AddSummaryTable(command);
  OmHeading& fixed = command.AddHeading("Fixed Effects");
  AddTestsTable(fixed);
  AddEstimatesTable(fixed);
  AddCorrelationTable(fixed);
  command.AddMessage(OmMessage::WARNING,
                     "The final Hessian matrix is not positive definite although all convergence criteria are "
                     "satisfied. The procedure continues despite this warning. Validity of subsequent results "
                     "cannot be ascertained.");
  command.AddMessage(OmMessage::ERROR, "Split Sex = Male: the model could not be fitted because the <Subject> "
                                       "field has fewer than 2 levels & no repeated measures.");
  AddChart(command);
  return doc;
}
