#pragma once

#include <string>

#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Format.h"

namespace specs_test {

// Columns of the test file.
enum {
  Y = 0,      // target, F8.2
  A = 1,      // factor, values 1 2 3
  B = 2,      // factor, values 10 20
  C = 3,      // factor, values 1 2
  X = 4,      // covariate
  Z = 5,      // covariate
  SUBJ = 6,   // subject, values 1 to 4
  NAME = 7,   // string A8
  W = 8,      // frequency weight
  T = 9,      // repeated measure, values 1 2
  CX = 10,    // spatial coordinate
  CY = 11,    // spatial coordinate
  G = 12,     // string factor A4, values "lo" "mid" "hi"
  SW = 13     // scale weight
};

// Eight cases, every value valid.
inline void MakeSpecsFile(ZORV_Dataset& ds) {
  const char* names[] = {"y", "a", "b", "c", "x", "z", "subj", "name", "w", "t", "cx", "cy", "g", "sw"};
  for (int i = 0; i < 14; ++i) ds.AddVariable(names[i], i == NAME ? 8 : i == G ? 4 : 0);
  ds.GetVariable(Y)->SetFormat(ZORV_Format(ZORV_Format::F, 8, 2));
  ds.GetVariable(A)->SetFormat(ZORV_Format(ZORV_Format::F, 3, 0));
  ds.GetVariable(G)->SetFormat(ZORV_Format(ZORV_Format::A, 4, 0));
  ds.GetVariable(NAME)->SetFormat(ZORV_Format(ZORV_Format::A, 8, 0));
  ds.AppendCases(8);
  const double as[] = {1, 2, 3, 1, 2, 3, 1, 2};
  const double bs[] = {10, 20, 10, 20, 10, 20, 10, 20};
  const char* gs[] = {"lo", "mid", "hi", "lo", "mid", "hi", "lo", "mid"};
  for (long r = 0; r < 8; ++r) {
    ds.SetNum(r, Y, 1.5 * static_cast<double>(r));
    ds.SetNum(r, A, as[r]);
    ds.SetNum(r, B, bs[r]);
    ds.SetNum(r, C, static_cast<double>(r % 2 + 1));
    ds.SetNum(r, X, 0.25 * static_cast<double>(r));
    ds.SetNum(r, Z, static_cast<double>(r * r));
    ds.SetNum(r, SUBJ, static_cast<double>(r / 2 + 1));
    ds.SetString(r, NAME, "case" + std::to_string(r));
    ds.SetNum(r, W, 1.0);
    ds.SetNum(r, T, static_cast<double>(r % 2 + 1));
    ds.SetNum(r, CX, static_cast<double>(r));
    ds.SetNum(r, CY, static_cast<double>(8 - r));
    ds.SetString(r, G, gs[r]);
    ds.SetNum(r, SW, 2.0);
  }
}

}  // namespace specs_test
