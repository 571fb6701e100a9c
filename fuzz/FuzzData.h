#pragma once

#include <string>

class ZORV_Dataset;

// The small fixed dataset the command targets work on: a numeric target,
// covariates, numeric and string factors, a subject and a repeated index,
// with a missing value and a weight.
namespace fuzzdata {

// The data as CSV text.
const char* CsvText();
// The dataset read from CsvText() once; the same object on every call.
const ZORV_Dataset& Dataset();

}  // namespace fuzzdata
