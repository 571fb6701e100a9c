#pragma once

#include <string>

// StatJSON documents of tables of predictions, for the tests of the two
// sides that show them.
namespace prediction_tables {

const char* const kTitle = "Empirical Best Linear Unbiased Predictions";

// One table of predictions; `name` tells the tables apart.
inline std::string Table(const std::string& name) {
  return R"({"name": ")" + name + R"(",
    "dimensions": [
      {"name": "Subject", "categories": [{"label": "1"}, {"label": "2"}]},
      {"name": "Statistics", "place": "column", "showName": false,
       "categories": [{"label": "Prediction"}, {"label": "Std. Error"}]}],
    "cells": [{"at": [0, 0], "value": 0.5}, {"at": [1, 1], "value": 0.25}]})";
}

// The tables at the document's full path.
inline std::string Nested(const std::string& tables) {
  return R"({"glmm": {"RandomEffectsParameters": {"tables": )" + tables + "}}}";
}

}  // namespace prediction_tables
