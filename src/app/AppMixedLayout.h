#pragma once

// Where a GLMIXFIT command lies in the parser's memory: byte offsets in the
// numeric block (8-byte slots) and in the character block. The procedure
// reads these offsets on its own; they are the contract and never move.
struct AppMixedLayout {
  enum Numeric : int {
    CONFIDENCE = 0,                // real, percent
    HESSIAN_CRITERION = 8,         // real
    LOGLIKELIHOOD_CRITERION = 16,  // real
    PARAMETER_CRITERION = 64,      // real
    SINGULAR = 80,                 // real
    TARGET = 104,                  // dictionary position
    CRITERIA_FORMAT = 128,         // packed format word
    ESTIMATES_FORMAT = 136,        // packed format word
    HESSIAN_KIND = 144,            // 1 relative, 2 absolute
    HISTORY_STEP = 232,
    SCORING = 240,
    LOGLIKELIHOOD_KIND = 272,
    METHOD = 312,  // 1 ML, 2 REML
    ITERATIONS = 336,
    HALVING = 344,
    N_COVARIATES = 360,
    N_FIXED_TERMS = 368,  // the intercept's row included
    N_RANDOM_TERMS = 376,
    N_MEANS = 384,
    N_FACTORS = 392,
    N_RANDOM_BLOCKS = 480,
    N_REPEATED_SUBJECTS = 504,
    N_REPEATED = 512,
    N_COORDINATES = 520,
    N_SAVES = 528,
    N_RANDOM_SUBJECTS = 544,
    N_CONTRASTS = 552,
    PARAMETER_KIND = 584,
    COVARIATES = 600,
    FIXED_TERMS = 696,
    RANDOM_TERMS = 712,
    FACTORS = 720,
    BLOCK_TERM_COUNTS = 968,   // per block
    MEANS_LIST = 1032,
    CONTRAST_LIST = 1048,
    REPEATED_SUBJECTS = 1128,
    BLOCK_COVARIANCES = 1144,  // per random term, at each block's first term
    BLOCK_SUBJECT_COUNTS = 1232,
    COORDINATES = 1256,
    REPEATED = 1264,
    BLOCK_SUBJECT_LISTS = 1296,
    BLOCK_PREDICT = 1336,  // per block
    RANDOM_SUBJECTS = 1384,
    REPEATED_COVARIANCE = 1536,
    SCALE_WEIGHT = 1560,
    SAVE_KINDS = 1576,  // seven slots
    SAVE_NAMES = 1632,  // seven slots
    FILE_KIND = 1688,
    TEST_TYPE = 1696,
    INTERCEPT = 1736,
    INCLUDE_USER_MISSING = 1752,
    SHOW_CASES = 1760,
    SHOW_ESTIMATE_CORRELATIONS = 1768,
    SHOW_ESTIMATE_COVARIANCES = 1776,
    SHOW_COVARIANCE_TESTS = 1784,
    SHOW_VARIABLES = 1792,
    SHOW_G = 1800,
    SHOW_HISTORY = 1808,
    SHOW_L = 1816,
    SHOW_R = 1824,
    SHOW_ESTIMATES = 1832
  };
  enum Character : int { MODEL_FILE = 40, STATJSON_FILE = 295, STATXML_FILE = 550, FILE_LENGTH = 255 };
  // Bytes of a saved variable's name in the word array.
  enum { SAVE_NAME_BYTES = 64, SAVE_SLOTS = 7 };
};
