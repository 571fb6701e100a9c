# Reference values of generalized linear mixed models fitted by
# subject-specific pseudo-likelihood, and the count and binary data they use.
#
# Writes tests/data/numeric/glmm/epil.csv and bacteria.csv from MASS's epil
# (seizure counts of 59 epileptics over four visits) and bacteria (presence
# of H. influenzae in 50 children over five weeks), and
# tests/data/numeric/reference/pseudo_likelihood.json with the fits of
#   cbpp:     cbind(incidence, size - incidence) ~ period + (1 | herd), logit,
#             residual (REML) and maximum (ML) pseudo-likelihood
#   epil:     y ~ trt + lbase + lage + V4 + (1 | subject), Poisson, log, REML,
#             and negative binomial, its shape estimated at the current means
#             before each linearisation (MASS::theta.ml)
#   bacteria: y ~ trt + wk2 + (1 | ID), binary, logit, REML
#   sleepstudy: Reaction ~ Days without random effects, gamma (log link) and
#             inverse Gaussian (1 / mu^2), against stats::glm
# The tests only read these files; R is needed only to regenerate them:
#
#   Rscript tests/numeric/reference/make_pseudo_likelihood_reference.R      (from the repository root)
#
# Checked with R 4.2, nlme 3.1-162, MASS 7.3-58.
#
# The pseudo-likelihood is implemented here as the engine iterates it: start
# from the family's initial means, linearise (working response
# z = eta + (y - mu) / mu.eta(eta), weights w mu.eta(eta)^2 / V(mu)), fit the
# working model with the residual variance fixed at 1, take the conditional
# linear predictor, and repeat until no fixed or covariance parameter
# changes by more than 1e-9 (relative where it exceeds 1). The working
# models are fitted by their likelihood written out below; with ML the loop
# agrees with the one that fits them by nlme::lme with
# lmeControl(sigma = 1), and that loop with the residual variance estimated
# agrees with MASS::glmmPQL (both checked when the script runs).

suppressPackageStartupMessages({
  library(nlme)
  library(MASS)
  library(jsonlite)
})

args <- commandArgs(trailingOnly = TRUE)
out_dir <- if (length(args) >= 1) args[1] else "tests/data/numeric/reference"
glmm_dir <- if (length(args) >= 2) args[2] else "tests/data/numeric/glmm"
data_dir <- "examples/data"

script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference",
                 "pseudo_likelihood_helpers.R"))

# The same loop with the working model fitted by nlme::lme: the residual
# variance fixed at 1 or estimated, by ML.
pl_fit_lme <- function(fixed, random, d, family, w, fix_sigma, tol = 1e-10, max_iter = 300) {
  y <- d$.y
  mu <- if (family$family == "binomial") (w * y + 0.5) / (w + 1) else y + 0.1
  eta <- family$linkfun(mu)
  prev <- NULL
  for (it in seq_len(max_iter)) {
    dmu <- family$mu.eta(eta)
    d$.z <- eta + (y - mu) / dmu
    d$.invwt <- 1 / (w * dmu^2 / family$variance(mu))
    ctrl <- control
    if (fix_sigma) ctrl$sigma <- 1
    fit <- lme(update(fixed, .z ~ .), random = random, data = d, weights = varFixed(~.invwt), method = "ML",
               control = ctrl)
    params <- c(fixef(fit), as.numeric(getVarCov(fit)[1, 1]))
    eta <- as.numeric(fitted(fit, level = 1))
    mu <- family$linkinv(eta)
    if (!is.null(prev) && max(abs(params - prev) / pmax(abs(prev), 1)) <= tol) break
    prev <- params
  }
  fit
}

describe <- function(res, factors, w, y, family) {
  X <- res$X
  labels <- attr(terms(res$fixed), "term.labels")
  assign <- attr(X, "assign")
  names <- vapply(seq_len(ncol(X)), function(j) {
    canonical_name(colnames(X)[j], if (assign[j] == 0) "" else labels[assign[j]], factors)
  }, "")
  list(columns = names, estimates = res$fit$b, std_errors = sqrt(diag(res$fit$cov)), random_variance = res$fit$s2,
       deviance = sum(family$dev.resids(y, res$mu, w)),
       pearson = sum(w * (y - res$mu)^2 / family$variance(res$mu)))
}

# cbpp: events out of trials.
cbpp <- read_data("cbpp.csv", c("herd", "period"), dir = data_dir)
cbpp$.y <- cbpp$incidence / cbpp$size
cbpp_reml <- pl_fit(~ period, "herd", cbpp, binomial(), cbpp$size)
cbpp_ml <- pl_fit(~ period, "herd", cbpp, binomial(), cbpp$size, reml = FALSE)

# The ML loop agrees with the one that fits its working models by lme.
cbpp_lme <- pl_fit_lme(~ period, ~ 1 | herd, cbpp, binomial(), cbpp$size, fix_sigma = TRUE)
stopifnot(isTRUE(all.equal(unname(fixef(cbpp_lme)), cbpp_ml$fit$b, tolerance = 1e-6)),
          isTRUE(all.equal(as.numeric(getVarCov(cbpp_lme)[1, 1]), cbpp_ml$fit$s2, tolerance = 1e-6)))
# With the residual variance estimated, the lme loop is the published
# pseudo-likelihood fit.
cbpp_free <- pl_fit_lme(~ period, ~ 1 | herd, cbpp, binomial(), cbpp$size, fix_sigma = FALSE)
pql <- glmmPQL(cbind(incidence, size - incidence) ~ period, random = ~ 1 | herd, family = binomial, data = cbpp,
               niter = 200, verbose = FALSE)
stopifnot(isTRUE(all.equal(unname(fixef(cbpp_free)), unname(fixef(pql)), tolerance = 1e-4)),
          isTRUE(all.equal(as.numeric(getVarCov(cbpp_free)[1, 1]), as.numeric(getVarCov(pql)[1, 1]),
                           tolerance = 1e-3)))

# epil: counts.
epil <- MASS::epil
epil_csv <- data.frame(subject = as.integer(epil$subject), trt = as.character(epil$trt), lbase = epil$lbase,
                       lage = epil$lage, V4 = epil$V4, y = epil$y)
write.csv(epil_csv, file.path(glmm_dir, "epil.csv"), row.names = FALSE)
epil_d <- read_data("epil.csv", c("subject", "trt"), dir = glmm_dir)
epil_d$.y <- epil_d$y
epil_reml <- pl_fit(~ trt + lbase + lage + V4, "subject", epil_d, poisson(), rep(1, nrow(epil_d)))
epil_nb <- pl_fit(~ trt + lbase + lage + V4, "subject", epil_d, poisson(), rep(1, nrow(epil_d)), nb = TRUE)

# bacteria: a binary target.
bac <- MASS::bacteria
bac_csv <- data.frame(ID = as.character(bac$ID), trt = as.character(bac$trt), wk2 = as.numeric(bac$week > 2),
                      y = as.numeric(bac$y == "y"))
write.csv(bac_csv, file.path(glmm_dir, "bacteria.csv"), row.names = FALSE)
bac_d <- read_data("bacteria.csv", c("ID", "trt"), dir = glmm_dir)
bac_d$.y <- bac_d$y
bac_reml <- pl_fit(~ trt + wk2, "ID", bac_d, binomial(), rep(1, nrow(bac_d)))

# Without random effects the iterations are those of a generalized linear
# model, and the working residual variance of a distribution whose scale is
# estimated is the Pearson statistic over n - p: stats::glm's fit and
# dispersion. Gamma with the log link and inverse Gaussian with its default
# link 1 / mu^2 on the sleep study's reaction times.
sleep <- read_data("sleepstudy.csv", c("Subject"), dir = data_dir)
glm_describe <- function(fit) {
  s <- summary(fit)
  list(columns = c("Intercept", "Days"), estimates = unname(coef(fit)),
       std_errors = unname(s$coefficients[, "Std. Error"]), scale = s$dispersion, deviance = deviance(fit),
       pearson = sum(residuals(fit, type = "pearson")^2))
}
sleep_gamma <- glm(Reaction ~ Days, family = Gamma(link = "log"), data = sleep,
                   control = glm.control(epsilon = 1e-14, maxit = 100))
sleep_igauss <- glm(Reaction ~ Days, family = inverse.gaussian(), data = sleep,
                    control = glm.control(epsilon = 1e-14, maxit = 100))

out <- list(
  cbpp_reml = describe(cbpp_reml, c("herd", "period"), cbpp$size, cbpp$.y, binomial()),
  cbpp_ml = describe(cbpp_ml, c("herd", "period"), cbpp$size, cbpp$.y, binomial()),
  epil_reml = describe(epil_reml, c("subject", "trt"), rep(1, nrow(epil_d)), epil_d$.y, poisson()),
  epil_negbin = c(describe(epil_nb, c("subject", "trt"), rep(1, nrow(epil_d)), epil_d$.y, epil_nb$family),
                  list(shape = epil_nb$shape)),
  bacteria_reml = describe(bac_reml, c("ID", "trt"), rep(1, nrow(bac_d)), bac_d$.y, binomial()),
  sleep_gamma = glm_describe(sleep_gamma),
  sleep_igauss = glm_describe(sleep_igauss))
write_json(out, file.path(out_dir, "pseudo_likelihood.json"), digits = NA, auto_unbox = TRUE, pretty = TRUE)
