#pragma once

// Where a GLMIXFIT command lies in the parser's memory: the slots of the
// numeric block, the file names of the character block, and the words of
// the custom test and marginal means records in the command's word array.
//
// The program lays a command out by these names and the specification reads
// it by them; nothing else knows an offset. The offsets are the interface
// with the parser and never move.
namespace MIXCommandLayout {

// What a slot of the numeric block holds. Every slot is an 8-byte word.
enum Kind {
  REAL,      // a double
  CODE,      // a count or a code, in the low 32 bits
  VARIABLE,  // a 1-based dictionary position; 0 or less is none
  FLAG,      // bit 0 is the setting
  FORMAT,    // a packed display format in the low 32 bits
  POSITION,  // a 1-based position in the word array; nothing when its count is 0
  LIST_HEAD  // the head of a list of records, walked by tmcget_
};

// A slot of the numeric block by its byte offset. The kind is part of the
// type, so that a slot can only be read or written as what it holds.
template <Kind K>
struct Slot {
  int fOffset;
  constexpr operator int() const { return fOffset; }
  // The i-th of a run of slots that starts here.
  constexpr Slot At(int i) const { return Slot{fOffset + 8 * i}; }
};

// A blank padded text of the character block.
struct Text {
  int fOffset;
  int fBytes;
};

// One entry of the layout, for walking all of it.
struct Entry {
  const char* fpName;
  int fOffset;
  Kind fKind;
  int fCount;  // slots in the run: 1, or one per saved variable
};

// The numeric block: name, byte offset, kind, slots.
#define MIX_COMMAND_NUMERIC_SLOTS(SLOT)           \
  SLOT(CONFIDENCE, 0, REAL, 1)                    \
  SLOT(HESSIAN_CRITERION, 8, REAL, 1)             \
  SLOT(LOGLIKELIHOOD_CRITERION, 16, REAL, 1)      \
  SLOT(PARAMETER_CRITERION, 64, REAL, 1)          \
  SLOT(SINGULAR, 80, REAL, 1)                     \
  SLOT(TARGET, 104, VARIABLE, 1)                  \
  SLOT(CRITERIA_FORMAT, 128, FORMAT, 1)           \
  SLOT(ESTIMATES_FORMAT, 136, FORMAT, 1)          \
  SLOT(HESSIAN_KIND, 144, CODE, 1)                \
  SLOT(HISTORY_STEP, 232, CODE, 1)                \
  SLOT(SCORING, 240, CODE, 1)                     \
  SLOT(LOGLIKELIHOOD_KIND, 272, CODE, 1)          \
  SLOT(METHOD, 312, CODE, 1)                      \
  SLOT(ITERATIONS, 336, CODE, 1)                  \
  SLOT(HALVING, 344, CODE, 1)                     \
  SLOT(N_COVARIATES, 360, CODE, 1)                \
  SLOT(N_FIXED_TERMS, 368, CODE, 1)               \
  SLOT(N_RANDOM_TERMS, 376, CODE, 1)              \
  SLOT(N_MEANS, 384, CODE, 1)                     \
  SLOT(N_FACTORS, 392, CODE, 1)                   \
  SLOT(N_RANDOM_BLOCKS, 480, CODE, 1)             \
  SLOT(N_REPEATED_SUBJECTS, 504, CODE, 1)         \
  SLOT(N_REPEATED, 512, CODE, 1)                  \
  SLOT(N_COORDINATES, 520, CODE, 1)               \
  SLOT(N_SAVES, 528, CODE, 1)                     \
  SLOT(N_RANDOM_SUBJECTS, 544, CODE, 1)           \
  SLOT(N_CONTRASTS, 552, CODE, 1)                 \
  SLOT(PARAMETER_KIND, 584, CODE, 1)              \
  SLOT(COVARIATES, 600, POSITION, 1)              \
  SLOT(FIXED_TERMS, 696, POSITION, 1)             \
  SLOT(RANDOM_TERMS, 712, POSITION, 1)            \
  SLOT(FACTORS, 720, POSITION, 1)                 \
  SLOT(BLOCK_TERM_COUNTS, 968, POSITION, 1)       \
  SLOT(MEANS_LIST, 1032, LIST_HEAD, 1)            \
  SLOT(CONTRAST_LIST, 1048, LIST_HEAD, 1)         \
  SLOT(REPEATED_SUBJECTS, 1128, POSITION, 1)      \
  SLOT(BLOCK_COVARIANCES, 1144, POSITION, 1)      \
  SLOT(BLOCK_SUBJECT_COUNTS, 1232, POSITION, 1)   \
  SLOT(COORDINATES, 1256, POSITION, 1)            \
  SLOT(REPEATED, 1264, POSITION, 1)               \
  SLOT(BLOCK_SUBJECT_LISTS, 1296, POSITION, 1)    \
  SLOT(BLOCK_PREDICT, 1336, POSITION, 1)          \
  SLOT(RANDOM_SUBJECTS, 1384, POSITION, 1)        \
  SLOT(REPEATED_COVARIANCE, 1536, CODE, 1)        \
  SLOT(SCALE_WEIGHT, 1560, VARIABLE, 1)           \
  SLOT(SAVE_KINDS, 1576, CODE, 7)                 \
  SLOT(SAVE_NAMES, 1632, POSITION, 7)             \
  SLOT(FILE_KIND, 1688, CODE, 1)                  \
  SLOT(TEST_TYPE, 1696, CODE, 1)                  \
  SLOT(INTERCEPT, 1736, FLAG, 1)                  \
  SLOT(INCLUDE_USER_MISSING, 1752, FLAG, 1)       \
  SLOT(SHOW_CASES, 1760, FLAG, 1)                 \
  SLOT(SHOW_ESTIMATE_CORRELATIONS, 1768, FLAG, 1) \
  SLOT(SHOW_ESTIMATE_COVARIANCES, 1776, FLAG, 1)  \
  SLOT(SHOW_COVARIANCE_TESTS, 1784, FLAG, 1)      \
  SLOT(SHOW_VARIABLES, 1792, FLAG, 1)             \
  SLOT(SHOW_G, 1800, FLAG, 1)                     \
  SLOT(SHOW_HISTORY, 1808, FLAG, 1)               \
  SLOT(SHOW_L, 1816, FLAG, 1)                     \
  SLOT(SHOW_R, 1824, FLAG, 1)                     \
  SLOT(SHOW_ESTIMATES, 1832, FLAG, 1)             \
  SLOT(DISTRIBUTION, 1840, CODE, 1)               \
  SLOT(LINK, 1848, CODE, 1)                       \
  SLOT(LINK_POWER, 1856, REAL, 1)                 \
  SLOT(TRIALS, 1864, VARIABLE, 1)                 \
  SLOT(TRIALS_VALUE, 1872, REAL, 1)               \
  SLOT(REFERENCE_KIND, 1880, CODE, 1)             \
  SLOT(REFERENCE_VALUE, 1888, REAL, 1)            \
  SLOT(OFFSET, 1896, VARIABLE, 1)                 \
  SLOT(FIT_METHOD, 1904, CODE, 1)                 \
  SLOT(QUADRATURE_POINTS, 1912, CODE, 1)          \
  SLOT(COVARIANCE_KIND, 1920, CODE, 1)

#define MIX_COMMAND_SLOT_CONSTANT(name, offset, kind, count) constexpr Slot<kind> name{offset};
MIX_COMMAND_NUMERIC_SLOTS(MIX_COMMAND_SLOT_CONSTANT)
#undef MIX_COMMAND_SLOT_CONSTANT

#define MIX_COMMAND_SLOT_ENTRY(name, offset, kind, count) Entry{#name, offset, kind, count},
constexpr Entry kNumericSlots[] = {MIX_COMMAND_NUMERIC_SLOTS(MIX_COMMAND_SLOT_ENTRY)};
#undef MIX_COMMAND_SLOT_ENTRY
#undef MIX_COMMAND_NUMERIC_SLOTS

// The seven saved variables: SAVE_KINDS.At(i) holds the kind of the i-th
// plus 1, SAVE_NAMES.At(i) the position of its name of SAVE_NAME_BYTES.
constexpr int SAVE_SLOTS = 7;
constexpr int SAVE_NAME_BYTES = 64;

// The character block: three file names.
constexpr int FILE_NAME_BYTES = 255;
constexpr Text MODEL_FILE{40, FILE_NAME_BYTES};  // the model or parameter file
constexpr Text STATJSON_FILE{295, FILE_NAME_BYTES};
constexpr Text STATXML_FILE{550, FILE_NAME_BYTES};

// The words (doubles) of a custom test record. With CONTRAST_ALL_VALUES at
// 1.0 the fixed and random words are the numbers of values in a row;
// otherwise they are positions of the counts per effect.
enum ContrastWord {
  CONTRAST_ALL_VALUES = 0,
  CONTRAST_N_ROWS = 1,
  CONTRAST_FIXED = 2,
  CONTRAST_RANDOM = 3,
  CONTRAST_VALUES = 4,
  CONTRAST_LABEL_LENGTH = 5,
  CONTRAST_LABEL = 6,
  CONTRAST_K = 7,
  CONTRAST_WORDS = 8
};

// The words (doubles) of a marginal means request. Word 0 is not read.
enum MeansWord {
  MEANS_N_FACTORS = 1,
  MEANS_FACTORS = 2,
  MEANS_COMPARE = 3,     // 1-based place in the factors; 0 none
  MEANS_COVARIATES = 4,  // position of the covariate blocks
  MEANS_ADJUST = 5,
  MEANS_REFERENCE_KIND = 6,  // how the reference category is given
  MEANS_REFERENCE = 7,       // the value, or the length of the text
  MEANS_REFERENCE_TEXT = 8,  // position of the text
  MEANS_WORDS = 9
};

// The four words of each covariate in a request's covariate blocks.
enum MeansCovariateWord {
  COVARIATE_HELD = 0,  // negative: held at COVARIATE_VALUE
  COVARIATE_VALUE = 1,
  COVARIATE_TEXT_LENGTH = 2,  // the value as written
  COVARIATE_TEXT = 3,
  COVARIATE_WORDS = 4
};

}  // namespace MIXCommandLayout
