#pragma once

namespace MCCommon_850 {

// The codes an MCStatus can carry. The kind a code has by default (error or
// warning) is decided by MCStatus::KindOfCode; a code that is not listed here
// is an error.
enum MCStatusCode : long {
  MC_OK = 0,

  // Errors.
  MC_SETTINGS_INVALID = 130009,           // settings inconsistent with the variable list
  MC_BUILD_MODEL = 130018,                // the model could not be built (a warning when so made)
  MC_INITIAL_VALUE_FAILED = 130025,       // no usable starting values
  MC_CANCELLED = 130032,                  // the caller asked to stop; nothing is said
  MC_SAME_SUBJECT_WITHIN = 130054,        // two records share subject and within-subject values
  MC_SCALE_ZERO = 130074,                 // the scale parameter is zero
  MC_WEIGHTS_DIFFER_IN_SUBJECT = 130077,  // frequency weights vary within a group that cannot be copied record by record
  MC_INVALID_RECORDS_OVERFLOW = 130079,   // too many invalid records
  MC_FILE_OPEN_FAILED = 130089,           // the data file could not be read again
  MC_OUTPUT_FILE_ERROR = 130093,          // a document could not be written
  MC_MODEL_FILE_ERROR = 130094,           // a model file could not be read
  MC_NO_VALID_CASES = 230024,             // no record can be used
  MC_DUPLICATE_REPEATED = 230025,         // repeated measures values repeat within a subject
  MC_POST_ESTIMATION_FAILED = 130090,     // the final evaluation after convergence failed
  MC_PERFECT_FIT = 230092,                // the model fits the data perfectly: no residual variance

  // Warnings.
  MC_MAX_STEP_HALVING = 130024,           // the step-halving limit was reached
  MC_EMMEANS_ONE_LEVEL = 130035,          // datum 0: number of the marginal means request
  MC_LOGLIK_NEAR_ZERO = 130044,           // the log likelihood approaches zero
  MC_QUASI_SEPARATION = 130045,           // a quasi-complete separation may exist
  MC_TESTS_INCOMPLETE = 130051,           // some effect tests could not be computed; nothing is said
  MC_HESSIAN_SINGULAR = 130069,           // unexpected singularity of the Hessian
  MC_HESSIAN_NOT_PD = 130070,             // converged, final Hessian not positive definite
  MC_COVPARAM_REDUNDANT = 130075,         // a covariance parameter is redundant; nothing is said
  MC_NO_HESSIAN_CONVERGENCE = 130088,     // converged, but not by the Hessian criterion
  MC_ITERATION_LIMIT = 230036,            // stopped at the iteration limit without convergence
  MC_CONVERGED_SINGULAR_HESSIAN = 230037, // converged with a singular Hessian
  MC_PARAM_HESSIAN_SINGULAR = 230038,     // a parameter made the Hessian singular
  MC_PARAM_AT_LOWER_BOUND = 230087,       // a covariance parameter sits at its lower bound
  MC_STEP_HALVING_LIMIT = 230094,         // stopped at the step-halving limit without convergence
  MC_PARAM_AT_UPPER_BOUND = 230095,       // a covariance parameter sits at its upper bound
  // Our own codes, beyond the component's list.
  MC_G_NOT_PD = 330001,                   // datum 0: random block (from 1) whose estimated G is not PD
  MC_R_NOT_PD = 330002,                   // the residual block's estimated R is not PD
  MC_GENERALIZED_UNAVAILABLE = 330003,    // a distribution, link or fitting method the engine cannot fit
  MC_PL_NOT_CONVERGED = 330004,           // the pseudo-likelihood iterations stopped at their limit
  MC_TARGET_OUT_OF_SUPPORT = 330005,      // datum 0: target variable, datum 1: records outside the support
  MC_ZERO_COUNT_SUBJECTS = 330006,        // datum 0: random block (from 1), datum 1: subjects whose counts are all 0
  MC_RANDOM_EFFECTS_TOO_LARGE = 330007,   // datum 1: millions of multiplications an evaluation of the largest group needs
  MC_FIXED_EFFECTS_TOO_LARGE = 330008     // data: model effect, its parameters, all fixed parameters, megabytes needed
};

}  // namespace MCCommon_850
