#include "host/output/ToString.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

// The exact `width` characters written for a number.
std::string Written(double value, std::uint8_t type, std::uint16_t width, std::uint8_t decimals) {
  OBS cell;
  cell.fNum = value;
  std::vector<char> out(width + 1u, '#');
  EXPECT_EQ(ToString(&cell, ZORV_Format(type, width, decimals), out.data()), 0);
  EXPECT_EQ(out[width], '#') << "nothing is written past the width";
  return std::string(out.data(), width);
}

}  // namespace

TEST(ToString, WritesFixedPointRightAligned) {
  EXPECT_EQ(Written(3.14159, ZORV_Format::F, 8, 2), "    3.14");
  EXPECT_EQ(Written(-2.5, ZORV_Format::F, 6, 0), "    -3");
  EXPECT_EQ(Written(12, ZORV_Format::F, 5, 0), "   12");
  EXPECT_EQ(Written(0.5, ZORV_Format::F, 6, 3), " 0.500");
}

TEST(ToString, MissingValueIsAPoint) {
  EXPECT_EQ(Written(-DBL_MAX, ZORV_Format::F, 8, 2), "       .");
  EXPECT_EQ(Written(-1.7976931348623157e308, ZORV_Format::COMMA, 4, 0), "   .");
}

TEST(ToString, TiesRoundAwayFromZero) {
  EXPECT_EQ(Written(2.5, ZORV_Format::F, 3, 0), "  3");
  EXPECT_EQ(Written(0.125, ZORV_Format::F, 4, 2), "0.13");
  EXPECT_EQ(Written(-0.125, ZORV_Format::F, 5, 2), "-0.13");
  EXPECT_EQ(Written(12345.0, ZORV_Format::E, 9, 3), "1.235E+04");
  // 2.675 is stored just below the tie, and rounds down.
  EXPECT_EQ(Written(2.675, ZORV_Format::F, 4, 2), "2.67");
}

TEST(ToString, NegativeZeroHasNoSign) {
  EXPECT_EQ(Written(-0.001, ZORV_Format::F, 6, 2), "  0.00");
  EXPECT_EQ(Written(-0.0, ZORV_Format::F, 3, 0), "  0");
}

TEST(ToString, TooWideNumbersDropTheLeadingZeroThenGoToExponent) {
  EXPECT_EQ(Written(0.123, ZORV_Format::F, 4, 3), ".123");
  EXPECT_EQ(Written(123456789.0, ZORV_Format::F, 8, 2), "1.23E+08");
  EXPECT_EQ(Written(123456789.0, ZORV_Format::F, 6, 2), " 1E+08");
}

TEST(ToString, WhatDoesNotFitIsAsterisks) {
  EXPECT_EQ(Written(123456.0, ZORV_Format::F, 4, 2), "****");
  EXPECT_EQ(Written(std::numeric_limits<double>::infinity(), ZORV_Format::F, 5, 1), "*****");
  EXPECT_EQ(Written(std::nan(""), ZORV_Format::F, 3, 1), "***");
}

TEST(ToString, CommaDollarDotAndPercent) {
  EXPECT_EQ(Written(1234567.891, ZORV_Format::COMMA, 12, 2), "1,234,567.89");
  EXPECT_EQ(Written(1234567.891, ZORV_Format::COMMA, 10, 2), "1234567.89");
  EXPECT_EQ(Written(-1234.5, ZORV_Format::DOLLAR, 10, 2), "-$1,234.50");
  EXPECT_EQ(Written(1234.5, ZORV_Format::DOLLAR, 10, 0), "    $1,235");
  EXPECT_EQ(Written(1234.5, ZORV_Format::DOT, 10, 2), "  1.234,50");
  EXPECT_EQ(Written(45.26, ZORV_Format::PCT, 6, 1), " 45.3%");
  EXPECT_EQ(Written(999.0, ZORV_Format::COMMA, 3, 0), "999");
}

TEST(ToString, ExponentNotation) {
  EXPECT_EQ(Written(12345.678, ZORV_Format::E, 10, 3), " 1.235E+04");
  EXPECT_EQ(Written(-0.00012, ZORV_Format::E, 9, 2), "-1.20E-04");
  EXPECT_EQ(Written(12345.678, ZORV_Format::E, 5, 3), "1E+04");
}

TEST(ToString, StringFormats) {
  OBS cells[2];
  std::memcpy(cells[0].fStr, "abcdefgh", 8);
  std::memcpy(cells[1].fStr, "ij      ", 8);
  char out[16] = {};
  EXPECT_EQ(ToString(cells, ZORV_Format(ZORV_Format::A, 10, 0), out), 0);
  EXPECT_EQ(std::string(out, 10), "abcdefghij");
  EXPECT_EQ(ToString(cells, ZORV_Format(ZORV_Format::AHEX, 4, 0), out), 0);
  EXPECT_EQ(std::string(out, 4), "6162");
  EXPECT_EQ(ToString(cells, ZORV_Format(ZORV_Format::A, 12, 0)), "abcdefghij");
}

TEST(ToString, RefusesWhatItCannotWrite) {
  OBS cell;
  cell.fNum = 1.0;
  char out[64] = {};
  EXPECT_EQ(ToString(nullptr, ZORV_Format(ZORV_Format::F, 8, 2), out), 1);
  EXPECT_EQ(ToString(&cell, ZORV_Format(ZORV_Format::F, 8, 2), nullptr), 1);
  EXPECT_EQ(ToString(&cell, ZORV_Format(ZORV_Format::F, 0, 0), out), 2);
  EXPECT_EQ(ToString(&cell, ZORV_Format(ZORV_Format::F, 41, 2), out), 3);
  EXPECT_EQ(ToString(&cell, ZORV_Format(9, 8, 2), out), 4);
  EXPECT_EQ(ToString(&cell, ZORV_Format(0, 8, 2)), "");
}

TEST(ToString, StringFormTrimsThePadding) {
  OBS cell;
  cell.fNum = 2.5;
  EXPECT_EQ(ToString(&cell, ZORV_Format(ZORV_Format::F, 40, 3)), "2.500");
  cell.fNum = -DBL_MAX;
  EXPECT_EQ(ToString(&cell, ZORV_Format(ZORV_Format::F, 40, 3)), ".");
}
