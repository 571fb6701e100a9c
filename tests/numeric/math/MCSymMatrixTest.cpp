#include "numeric/math/MCSymMatrix.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/common/MCMV.h"

using MCMath_850::MCSymMatrix;
using MCCommon_850::MCMV;

TEST(MCSymMatrix, EmptyByDefault) {
  MCSymMatrix matrix;
  EXPECT_EQ(matrix.GetNBlocks(), 0);
  EXPECT_EQ(matrix.GetDimension(), 0);
  EXPECT_TRUE(MCMV::IsMissing(matrix.GetElem(0, 0, 0, 0)));
}

TEST(MCSymMatrix, OneBlockIsSymmetric) {
  MCSymMatrix matrix({3});
  EXPECT_EQ(matrix.GetDimension(), 3);
  EXPECT_EQ(matrix.GetElem(0, 0, 2, 1), 0.0);
  EXPECT_TRUE(matrix.SetElem(0, 0, 0, 2, 1.5));
  EXPECT_EQ(matrix.GetElem(0, 0, 0, 2), 1.5);
  EXPECT_EQ(matrix.GetElem(0, 0, 2, 0), 1.5);
  EXPECT_TRUE(matrix.SetElem(0, 0, 1, 1, 4.0));
  EXPECT_EQ(matrix.GetElem(0, 0, 1, 1), 4.0);
}

TEST(MCSymMatrix, BlocksMirrorAcrossTheDiagonal) {
  MCSymMatrix matrix({2, 3});
  EXPECT_EQ(matrix.GetNBlocks(), 2);
  EXPECT_EQ(matrix.GetBlockSize(1), 3);
  EXPECT_EQ(matrix.GetBlockSize(2), 0);
  EXPECT_EQ(matrix.GetDimension(), 5);
  EXPECT_TRUE(matrix.SetElem(0, 1, 1, 2, -0.5));
  EXPECT_EQ(matrix.GetElem(1, 0, 2, 1), -0.5);
  EXPECT_EQ(matrix.GetElem(0, 1, 1, 2), -0.5);
  EXPECT_EQ(matrix.GetElem(0, 1, 2, 1), MCMV::Missing());  // row 2 is outside block 0
}

TEST(MCSymMatrix, OutsideAddressesAreRefused) {
  MCSymMatrix matrix({2});
  EXPECT_FALSE(matrix.SetElem(0, 0, 2, 0, 1.0));
  EXPECT_FALSE(matrix.SetElem(1, 0, 0, 0, 1.0));
  EXPECT_FALSE(matrix.SetElem(0, 0, -1, 0, 1.0));
  EXPECT_TRUE(MCMV::IsMissing(matrix.GetElem(0, 0, 0, 5)));
  EXPECT_TRUE(MCMV::IsMissing(matrix.GetElem(-1, 0, 0, 0)));
}

TEST(MCSymMatrix, ResizeClears) {
  MCSymMatrix matrix({2});
  matrix.SetElem(0, 0, 1, 1, 3.0);
  matrix.Resize({2, -1});
  EXPECT_EQ(matrix.GetElem(0, 0, 1, 1), 0.0);
  EXPECT_EQ(matrix.GetBlockSize(1), 0);
  EXPECT_EQ(matrix.GetDimension(), 2);
}

TEST(MCSymMatrix, Display) {
  MCSymMatrix matrix({2});
  matrix.SetElem(0, 0, 0, 0, 1.0);
  matrix.SetElem(0, 0, 1, 0, 0.5);
  matrix.SetElem(0, 0, 1, 1, 2.0);
  std::ostringstream os;
  matrix.Display(os);
  EXPECT_EQ(os.str(), "Block sizes: 2\nRow: 1 0.5\nRow: 0.5 2\n");
}
