// The residual block of a spatial structure: each record's coordinates.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMDesignBuilder.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRows.h"
#include "numeric/xml/MCVarList.h"

using MCGLMM_850::GLMMDesignBuilder;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCXML_850::MCVarList;
using namespace MCMath_850::MCConst;

namespace {

using Rows = GLMMTestRows;

// y 0, field (2 categories) 1, east 2, north 3.
MCVarList Variables() { return GLMMTestRows::VarList({"y", "field", "east", "north"}, {0, 2, 0, 0}); }

const double kMissing = MCCommon_850::MCMV::Missing();

Rows Records() {
  return Rows({{1.0, 0, 0.0, 0.0},
               {2.0, 0, 1.5, 0.5},
               {4.0, 0, 3.0, 2.0},
               {3.0, 1, 0.0, 1.0},
               {5.0, 1, kMissing, 1.0},
               {6.0, 1, 2.0, 2.5}});
}

GLMMSettings Settings(GLMMConst_850::CovarType type, bool subjects) {
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  if (subjects) repeated.AddSubjectVar(1);
  repeated.SetCovarianceType(type);
  settings.SetRepeated(repeated);
  settings.AddSpatialVar(2);
  settings.AddSpatialVar(3);
  return settings;
}

}  // namespace

TEST(GLMMDesignBuilderSpatial, CoordinatesOfEveryRecord) {
  const GLMMSettings settings = Settings(GLMMConst_850::SP_EXP, true);
  const MCVarList list = Variables();
  GLMMDesignBuilder builder(settings, list);
  Rows rows = Records();
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  const MCEngine_850::MCEngineResidualBlock& res = builder.GetInput().GetResidualBlock();
  EXPECT_EQ(res.GetCovType(), MCEngine_850::MCEngineCovType::SP_EXP);
  EXPECT_EQ(res.GetNCoordinates(), 2);
  ASSERT_EQ(res.GetCoordinates().size(), 12u);
  EXPECT_EQ(res.GetCoordinates()[2], 1.5);
  EXPECT_EQ(res.GetCoordinates()[3], 0.5);
  EXPECT_EQ(res.GetCoordinates()[11], 2.5);
  EXPECT_EQ(res.GetSubjects()[0], res.GetSubjects()[2]);
  EXPECT_NE(res.GetSubjects()[2], res.GetSubjects()[3]);
  // A record without a coordinate is left out.
  EXPECT_TRUE(std::isnan(builder.GetInput().GetY()[4]));
  EXPECT_EQ(builder.GetInput().GetY()[5], 6.0);
}

TEST(GLMMDesignBuilderSpatial, CoordinatesWithoutSubjects) {
  const GLMMSettings settings = Settings(GLMMConst_850::SP_POW, false);
  const MCVarList list = Variables();
  GLMMDesignBuilder builder(settings, list);
  Rows rows = Records();
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  const MCEngine_850::MCEngineResidualBlock& res = builder.GetInput().GetResidualBlock();
  EXPECT_EQ(res.GetCovType(), MCEngine_850::MCEngineCovType::SP_POW);
  EXPECT_TRUE(res.GetSubjects().empty());
  EXPECT_EQ(res.GetNCoordinates(), 2);
}

TEST(GLMMDesignBuilderSpatial, OtherStructuresReadNoCoordinates) {
  const GLMMSettings settings = Settings(GLMMConst_850::ARH1, true);
  const MCVarList list = Variables();
  GLMMDesignBuilder builder(settings, list);
  Rows rows = Records();
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  const MCEngine_850::MCEngineResidualBlock& res = builder.GetInput().GetResidualBlock();
  EXPECT_EQ(res.GetCovType(), MCEngine_850::MCEngineCovType::ARH1);
  EXPECT_EQ(res.GetNCoordinates(), 0);
  EXPECT_TRUE(res.GetCoordinates().empty());
  EXPECT_EQ(builder.GetInput().GetY()[4], 5.0);
}
