# Reference values of generalized linear mixed models fitted by maximum
# likelihood: the Laplace approximation and adaptive Gauss-Hermite
# quadrature, both by lme4::glmer.
#
# Writes tests/data/numeric/reference/laplace.json with
#   cbpp:     cbind(incidence, size - incidence) ~ period + (1 | herd),
#             binomial, logit: Laplace (nAGQ = 1) and quadrature (nAGQ = 10)
#   epil:     y ~ trt + lbase + lage + V4 + (1 | subject), Poisson, log
#   bacteria: y ~ trt + wk2 + (1 | ID), binary, logit
#   epil:     y ~ V4 + (V4 | subject), Poisson: an unstructured G
#   grouseticks: TICKS ~ YEAR + cHEIGHT + (1 | BROOD) + (1 | LOCATION),
#             Poisson: broods nested in locations (lme4's grouseticks,
#             written to tests/data/numeric/glmm/grouseticks.csv)
#   cbpp:     incidence out of size ~ 1 + (1 | herd) + (1 | period):
#             two crossed random blocks
#   epil:     y ~ trt + lbase + lage + V4 + (1 | subject), negative
#             binomial (Var = mu + mu^2 / k, k estimated), by glmmTMB's
#             nbinom2, with k and its standard error (the delta method from
#             glmmTMB's log k)
# on the data the pseudo-likelihood reference uses. For every fit: -2 log
# likelihood, the fixed estimates and their standard errors (glmer's vcov,
# from the Hessian of the deviance in the covariance and fixed parameters
# jointly), the random intercept's variance, and its standard error from the
# same Hessian taken over the variance instead of the standard deviation,
# and each record's linear predictor with its random effect's conditional mode.
# The tests only read this file; R is needed only to regenerate it:
#
#   Rscript tests/numeric/reference/make_laplace_reference.R      (from the repository root)
#
# Checked with R 4.2, lme4 1.1-31, numDeriv 2016.8-1.1, glmmTMB 1.1.5.

suppressPackageStartupMessages({
  library(lme4)
  library(numDeriv)
  library(glmmTMB)
  library(jsonlite)
})

args <- commandArgs(trailingOnly = TRUE)
out_dir <- if (length(args) >= 1) args[1] else "tests/data/numeric/reference"
glmm_dir <- "tests/data/numeric/glmm"
data_dir <- "examples/data"

script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

control <- glmerControl(optimizer = "nloptwrap",
                        optCtrl = list(algorithm = "NLOPT_LN_BOBYQA", xtol_abs = 1e-12, ftol_abs = 1e-14,
                                       xtol_rel = 1e-12, ftol_rel = 1e-14, maxeval = 100000),
                        tolPwrss = 1e-12, check.conv.grad = .makeCC("ignore", tol = 1e-3))

# The engine's names of a glmer fit's fixed columns.
fixed_names <- function(fit, factors) {
  X <- getME(fit, "X")
  labels <- attr(terms(formula(fit, fixed.only = TRUE)), "term.labels")
  assign <- attr(X, "assign")
  vapply(seq_len(ncol(X)), function(j) {
    canonical_name(colnames(X)[j], if (assign[j] == 0) "" else labels[assign[j]], factors)
  }, "")
}

describe <- function(fit, factors, nAGQ) {
  names <- fixed_names(fit, factors)
  # The deviance over (variance, beta): glmer's deviance function takes the
  # relative standard deviation theta and beta.
  dev <- update(fit, devFunOnly = TRUE)
  p <- c(getME(fit, "theta")^2, fixef(fit))
  H <- hessian(function(q) dev(c(sqrt(q[1]), q[-1])), p)
  cov <- 2 * solve(H)
  list(columns = names, nAGQ = nAGQ, minus2loglik = -2 * as.numeric(logLik(fit)),
       estimates = unname(fixef(fit)), std_errors = unname(sqrt(diag(as.matrix(vcov(fit))))),
       random_variance = as.numeric(VarCorr(fit)[[1]][1, 1]), random_variance_se = sqrt(cov[1, 1]),
       std_errors_from_variance_hessian = unname(sqrt(diag(cov))[-1]),
       linear_predictor = unname(predict(fit, type = "link")))
}

cbpp <- read_data("cbpp.csv", c("herd", "period"), dir = data_dir)
cbpp_laplace <- glmer(cbind(incidence, size - incidence) ~ period + (1 | herd), family = binomial, data = cbpp,
                      control = control)
cbpp_agq <- glmer(cbind(incidence, size - incidence) ~ period + (1 | herd), family = binomial, data = cbpp,
                  control = control, nAGQ = 10)
epil <- read_data("epil.csv", c("subject", "trt"), dir = glmm_dir)
epil_laplace <- glmer(y ~ trt + lbase + lage + V4 + (1 | subject), family = poisson, data = epil, control = control)
# A correlated random intercept and slope (an unstructured G).
epil_slope <- glmer(y ~ V4 + (V4 | subject), family = poisson, data = epil, control = control)
S <- VarCorr(epil_slope)$subject
bac <- read_data("bacteria.csv", c("ID", "trt"), dir = glmm_dir)
bac_laplace <- glmer(y ~ trt + wk2 + (1 | ID), family = binomial, data = bac, control = control)

# Several random blocks: the variances by block name.
several <- function(fit, factors, blocks) {
  names <- fixed_names(fit, factors)
  vc <- VarCorr(fit)
  # I(): one-column designs stay arrays in the file.
  list(columns = I(names), minus2loglik = -2 * as.numeric(logLik(fit)), estimates = I(unname(fixef(fit))),
       std_errors = I(unname(sqrt(diag(as.matrix(vcov(fit)))))),
       random_variances = vapply(blocks, function(b) as.numeric(vc[[b]][1, 1]), 0),
       linear_predictor = unname(predict(fit, type = "link")))
}
data(grouseticks, package = "lme4")
grouse <- data.frame(BROOD = as.integer(as.character(grouseticks$BROOD)),
                     LOCATION = as.integer(as.character(grouseticks$LOCATION)),
                     YEAR = as.integer(as.character(grouseticks$YEAR)),
                     cHEIGHT = grouseticks$cHEIGHT, TICKS = grouseticks$TICKS)
write.csv(grouse, file.path(glmm_dir, "grouseticks.csv"), row.names = FALSE)
grouse <- read_data("grouseticks.csv", c("BROOD", "LOCATION", "YEAR"), dir = glmm_dir)
grouse_fit <- glmer(TICKS ~ YEAR + cHEIGHT + (1 | BROOD) + (1 | LOCATION), family = poisson, data = grouse,
                    control = control)
cbpp_crossed <- glmer(cbind(incidence, size - incidence) ~ 1 + (1 | herd) + (1 | period), family = binomial,
                      data = cbpp, control = control)

# glmmTMB's negative binomial: the joint Hessian of its Laplace likelihood
# gives every standard error; the random standard deviation and the shape
# are fitted on the log scale, taken to the variance and the shape by the
# delta method. At this tolerance nlminb may report a singular convergence;
# the estimates are those of its default tolerance to seven digits.
tmb_control <- glmmTMBControl(optCtrl = list(iter.max = 10000, eval.max = 10000, rel.tol = 1e-12))
epil_tmb <- epil
epil_tmb$trt <- factor(as.character(epil_tmb$trt), levels = levels(epil$trt))
contrasts(epil_tmb$trt) <- contrasts(epil$trt)
epil_nb <- glmmTMB(y ~ trt + lbase + lage + V4 + (1 | subject), family = nbinom2, data = epil_tmb,
                   control = tmb_control)
nb_fixed <- summary(epil_nb$sdr, "fixed")
nb_var <- as.numeric(VarCorr(epil_nb)$cond$subject[1, 1])
nb_shape <- sigma(epil_nb)
epil_negbin <- list(
  columns = vapply(colnames(getME(epil_nb, "X")), function(n) canonical_name(n, if (n == "(Intercept)") "" else
    if (startsWith(n, "trt")) "trt" else n, c("subject", "trt")), ""),
  minus2loglik = -2 * as.numeric(logLik(epil_nb)), estimates = unname(fixef(epil_nb)$cond),
  std_errors = unname(sqrt(diag(vcov(epil_nb)$cond))), random_variance = nb_var,
  random_variance_se = 2 * nb_var * nb_fixed[rownames(nb_fixed) == "theta", 2],
  shape = nb_shape, shape_se = nb_shape * nb_fixed[rownames(nb_fixed) == "betad", 2],
  linear_predictor = unname(predict(epil_nb, type = "link")))

# With more than one quadrature point glmer's deviance leaves out the
# saturated model's log likelihood (it sums deviance residuals); adding it
# back gives -2 log likelihood with all its constants, as the Laplace fit
# reports it.
saturated <- -2 * sum(dbinom(cbpp$incidence, cbpp$size, cbpp$incidence / cbpp$size, log = TRUE))

out <- list(
  cbpp_laplace = describe(cbpp_laplace, c("herd", "period"), 1),
  cbpp_quadrature10 = c(describe(cbpp_agq, c("herd", "period"), 10),
                        list(saturated_minus2loglik = saturated)),
  epil_laplace = describe(epil_laplace, c("subject", "trt"), 1),
  bacteria_laplace = describe(bac_laplace, c("ID", "trt"), 1),
  epil_slope_laplace = list(columns = c("Intercept", "V4"), minus2loglik = -2 * as.numeric(logLik(epil_slope)),
                            estimates = unname(fixef(epil_slope)),
                            std_errors = unname(sqrt(diag(as.matrix(vcov(epil_slope))))),
                            random_covariance = c(S[1, 1], S[2, 1], S[2, 2])),
  grouseticks_laplace = several(grouse_fit, c("BROOD", "LOCATION", "YEAR"), c("BROOD", "LOCATION")),
  cbpp_crossed_laplace = several(cbpp_crossed, c("herd", "period"), c("herd", "period")),
  epil_negbin_laplace = epil_negbin)
# The standard errors of the fixed estimates do not depend on how the
# covariance parameter is written.
for (fit in out[1:4]) stopifnot(isTRUE(all.equal(fit$std_errors, fit$std_errors_from_variance_hessian, tolerance = 1e-4)))
write_json(out, file.path(out_dir, "laplace.json"), digits = NA, auto_unbox = TRUE, pretty = TRUE)
