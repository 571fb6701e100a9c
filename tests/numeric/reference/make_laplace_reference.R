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
#   sleepstudy: Reaction ~ Days + (1 | Subject) and + (Days | Subject),
#             gamma with a log link by glmmTMB (and (1 | Subject) with the
#             identity link) (Var = phi mu^2, phi the
#             dispersion, 1 / glmmTMB's shape); and (1 | Subject) inverse
#             Gaussian with a log link (Var = phi mu^3), which glmmTMB does
#             not fit, by a direct Laplace approximation written here and
#             checked against glmmTMB's gamma fit first
#   sleepstudy: power links, (1 | Subject): gamma with the inverse link by
#             glmmTMB (checked against the direct approximation), inverse
#             Gaussian with its own link POWER(-2) by the direct
#             approximation
#   sleepstudy: adaptive Gauss-Hermite quadrature with 5 and 10 points,
#             (1 | Subject): gamma and inverse Gaussian with the log link,
#             and with 10 the inverse Gaussian with POWER(-2), by the direct
#             code extended to quadrature (checked against its Laplace
#             approximation with one point and against R's integrate())
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

# Distributions with a scale of their own: gamma (Var = phi mu^2, glmmTMB's
# Gamma with shape 1 / phi) and inverse Gaussian (Var = phi mu^3), both with
# a log link, on sleepstudy's reaction times.
sleep <- read_data("sleepstudy.csv", "Subject", dir = data_dir)
gamma_tmb <- glmmTMB(Reaction ~ Days + (1 | Subject), family = Gamma(link = "log"), data = sleep,
                     control = tmb_control)
gamma_identity_tmb <- glmmTMB(Reaction ~ Days + (1 | Subject), family = Gamma(link = "identity"), data = sleep,
                              control = tmb_control)
gamma_slope_tmb <- glmmTMB(Reaction ~ Days + (Days | Subject), family = Gamma(link = "log"), data = sleep,
                           control = tmb_control)

# glmmTMB's fit in the engine's terms: the dispersion phi = 1 / shape is
# sigma^2, its standard error phi times that of glmmTMB's log shape.
describe_scaled_tmb <- function(fit, factors) {
  fixed <- summary(fit$sdr, "fixed")
  vc <- VarCorr(fit)$cond[[1]]
  phi <- sigma(fit)^2
  X <- getME(fit, "X")
  labels <- attr(terms(formula(fit, fixed.only = TRUE)), "term.labels")
  assign <- attr(X, "assign")
  # A random slope's block has no single variance's standard error here.
  Filter(Negate(is.null), list(columns = I(vapply(seq_len(ncol(X)), function(j) {
         canonical_name(colnames(X)[j], if (assign[j] == 0) "" else labels[assign[j]], factors)
       }, "")),
       minus2loglik = -2 * as.numeric(logLik(fit)), estimates = I(unname(fixef(fit)$cond)),
       std_errors = I(unname(sqrt(diag(vcov(fit)$cond)))),
       random_covariance = if (nrow(vc) == 1) vc[1, 1] else c(vc[1, 1], vc[2, 1], vc[2, 2]),
       random_variance_se = if (nrow(vc) == 1) 2 * vc[1, 1] * fixed[rownames(fixed) == "theta", 2] else NULL,
       dispersion = phi, dispersion_se = phi * fixed[rownames(fixed) == "betad", 2],
       linear_predictor = unname(predict(fit, type = "link"))))
}

# An independent Laplace approximation for one random intercept per subject:
# each subject's mode of u (b = sigma u) by Newton steps on
# g(u) = -log p(y | u) + u^2 / 2, with step halving where a step leaves the
# link's domain (mu > 0), and -2 log L = sum over subjects of
# 2 g(u) + log g''(u) at the mode, with the family's analytic derivatives in
# mu taken to eta through the link's. With nAGQ points, adaptive
# Gauss-Hermite quadrature about the mode scaled by g''(u)^(-1/2) (lme4's
# GHrule for the nodes), glmer's nAGQ formula; one point is the Laplace
# approximation. Optimised over (beta, log sigma, log phi) by nlminb.
scaled_families <- list(
  gamma = list(
    logp = function(y, mu, phi) dgamma(y, shape = 1 / phi, scale = mu * phi, log = TRUE),
    dmu1 = function(y, mu, phi) (y - mu) / (phi * mu^2),
    dmu2 = function(y, mu, phi) (mu - 2 * y) / (phi * mu^3)),
  igauss = list(
    logp = function(y, mu, phi) -0.5 * (log(2 * pi * phi * y^3) + (y - mu)^2 / (phi * mu^2 * y)),
    dmu1 = function(y, mu, phi) (y - mu) / (phi * mu^3),
    dmu2 = function(y, mu, phi) (2 * mu - 3 * y) / (phi * mu^4)))

# Links by their inverse mu(eta) and its first two derivatives; a power
# link eta = mu^p.
log_link <- list(mu = exp, d1 = exp, d2 = exp)
power_link <- function(p) list(mu = function(eta) eta^(1 / p), d1 = function(eta) eta^(1 / p - 1) / p,
                               d2 = function(eta) (1 / p) * (1 / p - 1) * eta^(1 / p - 2))

# The derivatives of log p(y | eta) in eta.
eta_derivatives <- function(fam, link, y, eta, phi) {
  mu <- link$mu(eta)
  d1 <- link$d1(eta)
  list(d1 = fam$dmu1(y, mu, phi) * d1,
       d2 = fam$dmu2(y, mu, phi) * d1^2 + fam$dmu1(y, mu, phi) * link$d2(eta))
}

# `what`: "total" -2 log L, "subjects" each subject's share, "modes" each
# record's random effect at its subject's mode.
laplace_deviance <- function(fam, y, X, subject, beta, sigma, phi, what = "total", link = log_link, nAGQ = 1) {
  fixed <- drop(X %*% beta)
  rule <- GHrule(nAGQ)
  by_subject <- numeric(0)
  u_all <- numeric(0)
  for (s in split(seq_along(y), subject)) {
    g <- function(u) {
      mu <- link$mu(fixed[s] + sigma * u)
      if (any(!is.finite(mu) | mu <= 0)) return(Inf)
      -sum(fam$logp(y[s], mu, phi)) + u^2 / 2
    }
    curvature <- function(u) -sigma^2 * sum(eta_derivatives(fam, link, y[s], fixed[s] + sigma * u, phi)$d2) + 1
    u <- 0
    for (it in 1:100) {
      grad <- -sigma * sum(eta_derivatives(fam, link, y[s], fixed[s] + sigma * u, phi)$d1) + u
      step <- grad / curvature(u)
      t <- 1
      while (!is.finite(g(u - t * step)) && t > 1e-10) t <- t / 2
      u <- u - t * step
      if (abs(t * step) < 1e-13) break
    }
    curv <- curvature(u)
    laplace <- 2 * g(u) + log(curv)
    # Quadrature about the mode: sum_k w_k exp(-(g(u_k) - g(u)) + z_k^2 / 2).
    z <- rule[, "z"]
    gz <- vapply(u + z / sqrt(curv), g, 0)
    by_subject <- c(by_subject, laplace - 2 * log(sum(rule[, "w"] * exp(-(gz - g(u)) + z^2 / 2))))
    u_all <- c(u_all, rep(sigma * u, length(s)))
  }
  switch(what, total = sum(by_subject), subjects = by_subject, modes = u_all)
}

# Differences wide enough for the modes' own precision.
laplace_deriv_args <- list(eps = 1e-4, d = 0.01, zero.tol = 1e-12, r = 4, v = 2)

# The fit: estimates, -2 log L, and the standard errors from the Hessian
# over (beta, sigma^2, phi), the scales the engine reports on. The fixed
# effects are optimised divided by `beta_scale` (their standard errors in a
# fixed-effects fit), so that nlminb sees parameters of one size under a
# power link, whose coefficients are far below 1.
laplace_fit <- function(fam, y, X, subject, start, link = log_link, nAGQ = 1, beta_scale = rep(1, ncol(X))) {
  k <- ncol(X)
  scaled <- c(beta_scale, 1, 1)
  dev <- function(p) {
    q <- p * scaled
    laplace_deviance(fam, y, X, subject, q[seq_len(k)], exp(q[k + 1]), exp(q[k + 2]), link = link, nAGQ = nAGQ)
  }
  ctrl <- list(rel.tol = 1e-14, x.tol = 1e-14, iter.max = 10000, eval.max = 10000)
  opt <- nlminb(start / scaled, dev, control = ctrl)
  # Restarted once from there: at this tolerance nlminb may stop with a
  # singular convergence short of the optimum.
  opt <- nlminb(opt$par, dev, control = ctrl)
  # nlminb may also stop short where the deviance is flat (the quadrature's
  # covariance parameters): polished by BFGS in units of the parameters'
  # standard errors there.
  units <- sqrt(abs(diag(solve(hessian(dev, opt$par, method.args = laplace_deriv_args)))))
  polish <- optim(opt$par, dev, method = "BFGS", control = list(parscale = units, reltol = 1e-16, maxit = 1000))
  if (polish$value < opt$objective) opt <- list(par = polish$par, objective = polish$value)
  p <- opt$par * scaled
  natural <- c(p[seq_len(k)], exp(2 * p[k + 1]), exp(p[k + 2]))
  H <- hessian(function(q) laplace_deviance(fam, y, X, subject, q[seq_len(k)], sqrt(q[k + 1]), q[k + 2],
                                            link = link, nAGQ = nAGQ),
               natural, method.args = laplace_deriv_args)
  se <- sqrt(diag(2 * solve(H)))
  order <- unlist(split(seq_along(y), subject))
  eta <- numeric(length(y))
  eta[order] <- drop(X %*% p[seq_len(k)])[order] +
    laplace_deviance(fam, y, X, subject, p[seq_len(k)], exp(p[k + 1]), exp(p[k + 2]), what = "modes", link = link,
                     nAGQ = nAGQ)
  list(minus2loglik = opt$objective, estimates = I(p[seq_len(k)]), std_errors = I(se[seq_len(k)]),
       random_covariance = natural[k + 1], random_variance_se = se[k + 1],
       dispersion = natural[k + 2], dispersion_se = se[k + 2], linear_predictor = eta)
}

sleep_X <- cbind(1, sleep$Days)
sleep_gamma <- describe_scaled_tmb(gamma_tmb, "Subject")
sleep_gamma_direct <- laplace_fit(scaled_families$gamma, sleep$Reaction, sleep_X, sleep$Subject,
                                  c(5.5, 0, log(0.1), log(0.01)))
# The direct approximation is checked on the gamma fit glmmTMB makes.
for (name in c("minus2loglik", "estimates", "std_errors", "random_covariance", "random_variance_se",
               "dispersion", "dispersion_se", "linear_predictor")) {
  stopifnot(isTRUE(all.equal(as.numeric(sleep_gamma[[name]]), as.numeric(sleep_gamma_direct[[name]]),
                             tolerance = 1e-5)))
}
# The cluster-robust (sandwich) covariance of the fixed estimates of a
# likelihood fit: with D_g each subject's share of the Laplace deviance and
# H the Hessian of their sum over all parameters, H^-1 (sum_g grad D_g
# grad D_g') H^-1 (the scores and information of the log likelihood are
# -grad D / 2 and H / 2), its fixed block; the gradients re-find the modes,
# so they hold the log determinant's dependence on the parameters. At
# glmmTMB's gamma estimates, by the direct approximation.
robust_fixed_se <- function(fam, y, X, subject, natural) {
  k <- ncol(X)
  dev <- function(q, what) laplace_deviance(fam, y, X, subject, q[seq_len(k)], sqrt(q[k + 1]), q[k + 2], what)
  H <- hessian(function(q) dev(q, "total"), natural, method.args = laplace_deriv_args)
  J <- jacobian(function(q) dev(q, "subjects"), natural, method.args = laplace_deriv_args)
  Hi <- solve(H)
  sqrt(diag(Hi %*% crossprod(J) %*% Hi))[seq_len(k)]
}
sleep_gamma$robust_std_errors <- I(robust_fixed_se(scaled_families$gamma, sleep$Reaction, sleep_X, sleep$Subject,
                                                   c(sleep_gamma$estimates, sleep_gamma$random_covariance,
                                                     sleep_gamma$dispersion)))

sleep_igauss <- c(list(columns = I(c("Intercept", "Days"))),
                  laplace_fit(scaled_families$igauss, sleep$Reaction, sleep_X, sleep$Subject,
                              # From the gamma fit: Var = phi mu^2 is
                              # (phi / mu) mu^3 at the mean reaction time.
                              c(sleep_gamma$estimates, log(sleep_gamma$random_covariance) / 2,
                                log(sleep_gamma$dispersion / mean(sleep$Reaction)))))

# Power links: the gamma's inverse link (POWER(-1)) by glmmTMB, checked
# against the direct approximation as the log link is, and the inverse
# Gaussian's own link POWER(-2) by the direct approximation alone. Their
# coefficients are some 1e-3 to 1e-7: nlminb works on them divided by the
# standard errors of a fixed-effects fit of the same link, which also
# gives the start.
gamma_inverse_tmb <- glmmTMB(Reaction ~ Days + (1 | Subject), family = Gamma(link = "inverse"), data = sleep,
                             control = tmb_control)
sleep_gamma_inverse <- describe_scaled_tmb(gamma_inverse_tmb, "Subject")
power_start <- function(family, variance) {
  glm_fit <- glm(Reaction ~ Days, family = family, data = sleep)
  list(start = c(coef(glm_fit), log(variance) / 2, log(summary(glm_fit)$dispersion)),
       scale = unname(sqrt(diag(vcov(glm_fit)))))
}
gamma_inverse_start <- power_start(Gamma(link = "inverse"), 1e-7)
sleep_gamma_inverse_direct <- laplace_fit(scaled_families$gamma, sleep$Reaction, sleep_X, sleep$Subject,
                                          gamma_inverse_start$start, link = power_link(-1),
                                          beta_scale = gamma_inverse_start$scale)
for (name in c("minus2loglik", "estimates", "std_errors", "random_covariance", "random_variance_se",
               "dispersion", "dispersion_se", "linear_predictor")) {
  stopifnot(isTRUE(all.equal(as.numeric(sleep_gamma_inverse[[name]]),
                             as.numeric(sleep_gamma_inverse_direct[[name]]), tolerance = 1e-5)))
}
igauss_start <- power_start(inverse.gaussian(), 1e-12)
sleep_igauss_power <- c(list(columns = I(c("Intercept", "Days"))),
                        laplace_fit(scaled_families$igauss, sleep$Reaction, sleep_X, sleep$Subject,
                                    igauss_start$start, link = power_link(-2), beta_scale = igauss_start$scale))

# Adaptive quadrature with 5 and 10 points, gamma and inverse Gaussian with
# the log link and the inverse Gaussian with its own link, by the direct
# code. Checked first: one point is its Laplace approximation, and at the
# 10-point optimum each subject's integral agrees with R's integrate().
sleep_quadrature <- function(fam, start, n, link = log_link, beta_scale = rep(1, 2)) {
  c(list(columns = I(c("Intercept", "Days")), nAGQ = n),
    laplace_fit(fam, sleep$Reaction, sleep_X, sleep$Subject, start, link = link, nAGQ = n, beta_scale = beta_scale))
}
gamma_log_start <- c(sleep_gamma$estimates, log(sleep_gamma$random_covariance) / 2, log(sleep_gamma$dispersion))
stopifnot(isTRUE(all.equal(
  laplace_deviance(scaled_families$gamma, sleep$Reaction, sleep_X, sleep$Subject, sleep_gamma$estimates,
                   sqrt(sleep_gamma$random_covariance), sleep_gamma$dispersion, nAGQ = 1),
  laplace_deviance(scaled_families$gamma, sleep$Reaction, sleep_X, sleep$Subject, sleep_gamma$estimates,
                   sqrt(sleep_gamma$random_covariance), sleep_gamma$dispersion), tolerance = 1e-14)))
sleep_gamma_quadrature5 <- sleep_quadrature(scaled_families$gamma, gamma_log_start, 5)
sleep_gamma_quadrature10 <- sleep_quadrature(scaled_families$gamma, gamma_log_start, 10)
integrated_deviance <- function(fam, fit, link) {
  sigma <- sqrt(fit$random_covariance)
  fixed <- drop(sleep_X %*% fit$estimates)
  sum(vapply(split(seq_along(sleep$Reaction), sleep$Subject), function(s) {
    logf <- function(b) sum(fam$logp(sleep$Reaction[s], link$mu(fixed[s] + b), fit$dispersion)) +
      dnorm(b, 0, sigma, log = TRUE)
    # The integrand divided by its largest value, so that it is of size 1.
    top <- optimize(logf, c(-8 * sigma, 8 * sigma), maximum = TRUE, tol = 1e-12)
    f <- function(b) exp(vapply(b, logf, 0) - top$objective)
    area <- integrate(f, -12 * sigma, 12 * sigma, rel.tol = 1e-12, abs.tol = 0, subdivisions = 1000)$value
    -2 * (log(area) + top$objective)
  }, 0))
}
stopifnot(isTRUE(all.equal(sleep_gamma_quadrature10$minus2loglik,
                           integrated_deviance(scaled_families$gamma, sleep_gamma_quadrature10, log_link),
                           tolerance = 1e-7)))
igauss_log_start <- c(sleep_igauss$estimates, log(sleep_igauss$random_covariance) / 2, log(sleep_igauss$dispersion))
sleep_igauss_quadrature5 <- sleep_quadrature(scaled_families$igauss, igauss_log_start, 5)
sleep_igauss_quadrature10 <- sleep_quadrature(scaled_families$igauss, igauss_log_start, 10)
stopifnot(isTRUE(all.equal(sleep_igauss_quadrature10$minus2loglik,
                           integrated_deviance(scaled_families$igauss, sleep_igauss_quadrature10, log_link),
                           tolerance = 1e-7)))
igauss_power_start <- c(sleep_igauss_power$estimates, log(sleep_igauss_power$random_covariance) / 2,
                        log(sleep_igauss_power$dispersion))
sleep_igauss_power_quadrature10 <- sleep_quadrature(scaled_families$igauss, igauss_power_start, 10,
                                                    link = power_link(-2), beta_scale = igauss_start$scale)

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
  epil_negbin_laplace = epil_negbin,
  sleepstudy_gamma_laplace = sleep_gamma,
  sleepstudy_gamma_slope_laplace = describe_scaled_tmb(gamma_slope_tmb, "Subject"),
  sleepstudy_gamma_identity_laplace = describe_scaled_tmb(gamma_identity_tmb, "Subject"),
  sleepstudy_igauss_laplace = sleep_igauss,
  sleepstudy_gamma_inverse_laplace = sleep_gamma_inverse,
  sleepstudy_igauss_power_laplace = sleep_igauss_power,
  sleepstudy_gamma_quadrature5 = sleep_gamma_quadrature5,
  sleepstudy_gamma_quadrature10 = sleep_gamma_quadrature10,
  sleepstudy_igauss_quadrature5 = sleep_igauss_quadrature5,
  sleepstudy_igauss_quadrature10 = sleep_igauss_quadrature10,
  sleepstudy_igauss_power_quadrature10 = sleep_igauss_power_quadrature10)
# The standard errors of the fixed estimates do not depend on how the
# covariance parameter is written.
for (fit in out[1:4]) stopifnot(isTRUE(all.equal(fit$std_errors, fit$std_errors_from_variance_hessian, tolerance = 1e-4)))
write_json(out, file.path(out_dir, "laplace.json"), digits = NA, auto_unbox = TRUE, pretty = TRUE)
