# Reference values for the random-effect predictions (EBLUPs) and the
# per-record scores.
#
# Fits the models with lme4 (REML; one model with AR1 residuals with nlme)
# and writes one JSON file per model into tests/data/numeric/reference/
# (eblup_<model>.json). The tests only read these files; R is needed only to
# regenerate them:
#
#   Rscript tests/numeric/reference/make_eblup_reference.R      (from the repository root)
#
# Checked with R 4.2, lme4 1.1-31, lmerTest 3.1-3, nlme 3.1-162, numDeriv.
#
# What is written, and how it is computed:
#
# * The predictions of the random effects are lme4's conditional modes
#   (ranef); they equal the solution of the mixed-model equations, which the
#   script checks.
# * Their standard errors are prediction standard errors that include the
#   uncertainty of the fixed estimates: the square roots of the diagonal of
#   the random-effect block of C, the inverse of the mixed-model equations
#     M = [X'R^-1 X, X'R^-1 Z; Z'R^-1 X, Z'R^-1 Z + G^-1].
#   lme4's condVar standard deviations leave out the fixed estimates'
#   uncertainty (they are sqrt(diag((Z'R^-1 Z + G^-1)^-1))); they are written
#   too, as "condsd", for comparison only.
# * Degrees of freedom are Satterthwaite's for the row l of the joint system:
#   nu = 2 (l C l')^2 / (g' A g), where g is the gradient of l C l' in lmerTest's
#   variance parameters (lme4's theta and sigma), taken by numerical
#   differentiation (numDeriv), and A is lmerTest's asymptotic covariance of
#   those parameters. The df do not depend on the parameterisation at the
#   optimum. For the model with AR1 residuals the same is computed from a
#   dense implementation over all records, with A = 2 H^-1 and H the
#   Jacobian of the analytic gradient of the restricted likelihood.
# * Scores per record: the fixed prediction x'beta (predict(re.form = NA)),
#   its standard error sqrt(x' C11 x) and df; the prediction with the random
#   effects x'beta + z'u (predict()), its standard error sqrt(l C l') with
#   l = [x, z] and df; and the residual y - x'beta - z'u.
# * Factor levels sort ascending, and the last level is the reference, as in
#   make_reference.R; predictions do not depend on the coding.
# * The fits are polished by Newton steps on lme4's deviance function, as in
#   make_reference.R, so that the values are accurate to far below the tests'
#   tolerances.

suppressPackageStartupMessages({
  library(lme4)
  library(lmerTest)
  library(jsonlite)
  library(nlme)
  library(numDeriv)
})

args <- commandArgs(trailingOnly = TRUE)
data_dir <- if (length(args) >= 1) args[1] else "examples/data"
out_dir <- if (length(args) >= 2) args[2] else "tests/data/numeric/reference"
dir.create(out_dir, showWarnings = FALSE, recursive = TRUE)

# The shared helpers stand next to this script.
script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

# The inverse of the mixed-model equations at lmerTest's variance parameters
# varpar = (theta, sigma), for R = sigma^2 I and G = sigma^2 Lambda Lambda'.
mme_inverse <- function(m, varpar) {
  X <- getME(m, "X")
  Z <- as.matrix(getME(m, "Z"))
  nth <- length(getME(m, "theta"))
  theta <- varpar[seq_len(nth)]
  s2 <- varpar[nth + 1]^2
  Lt <- getME(m, "Lambdat")
  Lt@x <- theta[getME(m, "Lind")]
  G <- s2 * as.matrix(crossprod(Lt))
  M <- rbind(cbind(crossprod(X), crossprod(X, Z)), cbind(crossprod(Z, X), crossprod(Z) + s2 * solve(G))) / s2
  solve(M)
}

# Satterthwaite df of each row of L from the gradients of diag(L C L').
satterthwaite <- function(m, L) {
  varpar <- c(getME(m, "theta"), sigma(m))
  A <- m@vcov_varpar
  pev <- function(vp) { C <- mme_inverse(m, vp); rowSums((L %*% C) * L) }
  v <- pev(varpar)
  J <- numDeriv::jacobian(pev, varpar, method.args = deriv_args)
  vapply(seq_along(v), function(i) 2 * v[i]^2 / drop(t(J[i, ]) %*% A %*% J[i, ]), 0)
}

# Names of the random-effect columns of lme4's Z: for each term, the levels
# of its grouping factor, within a level the term's columns.
random_columns <- function(m) {
  out <- list()
  cnms <- m@cnms
  flist <- getME(m, "flist")
  for (i in seq_along(cnms)) {
    grp <- names(cnms)[i]
    lev <- levels(flist[[grp]])
    for (l in lev) for (cn in cnms[[i]]) {
      out[[length(out) + 1]] <- list(term = i, group = grp, level = l,
                                     effect = if (cn == "(Intercept)") "Intercept" else cn)
    }
  }
  out
}

# One prediction of a random effect with its t test and 95% interval.
prediction_entry <- function(term, group, subject, effect, estimate, se, df) {
  t <- estimate / se
  tq <- qt(0.975, df)
  list(term = term, group = group, subject = as.list(subject), effect = effect, estimate = estimate, se = se,
       df = df, t = t, p = 2 * pt(abs(t), df, lower.tail = FALSE), lower = estimate - tq * se,
       upper = estimate + tq * se)
}

# The scores of every record, rows numbered from 0.
score_entries <- function(fixed, fixed_se, fixed_df, predicted, predicted_se, predicted_df, residual) {
  lapply(seq_along(fixed), function(i)
    list(row = i - 1, fixed = fixed[i], fixed_se = fixed_se[i], fixed_df = fixed_df[i], predicted = predicted[i],
         predicted_se = predicted_se[i], predicted_df = predicted_df[i], residual = residual[i]))
}

write_eblup_fixture <- function(fixture) {
  write_reference_json(fixture, paste0("eblup_", fixture$model))
  cat(sprintf("%-12s -2LL %.8f  %d predictions, %d scored records\n", fixture$model, fixture$minus2ll,
              length(fixture$eblups), length(fixture$scores)))
  invisible(fixture)
}

eblup_fixture <- function(name, data_file, formula, data, factors, notes, subject_split = NULL, scores = TRUE) {
  m <- fit_lmer(formula, data)
  X <- getME(m, "X")
  Z <- as.matrix(getME(m, "Z"))
  p <- ncol(X)
  q <- ncol(Z)
  varpar <- c(getME(m, "theta"), sigma(m))
  C <- mme_inverse(m, varpar)
  s2 <- sigma(m)^2
  y <- getME(m, "y")
  sol <- drop(C %*% c(crossprod(X, y), crossprod(Z, y)) / s2)
  stopifnot(max(abs(sol[seq_len(p)] - fixef(m))) < 1e-7 * max(1, abs(fixef(m))))
  b <- as.numeric(getME(m, "b"))
  stopifnot(max(abs(sol[p + seq_len(q)] - b)) < 1e-7 * max(1, abs(b)))

  cols <- random_columns(m)
  stopifnot(length(cols) == q)
  re <- ranef(m, condVar = TRUE)
  condsd <- numeric(q)
  for (j in seq_len(q)) {
    cj <- cols[[j]]
    pv <- attr(re[[cj$group]], "postVar")
    k <- match(if (cj$effect == "Intercept") "(Intercept)" else cj$effect, colnames(re[[cj$group]]))
    stopifnot(abs(re[[cj$group]][cj$level, k] - b[j]) < 1e-9 * max(1, abs(b[j])))
    condsd[j] <- sqrt(pv[k, k, match(cj$level, rownames(re[[cj$group]]))]) * 1
  }
  Lr <- cbind(matrix(0, q, p), diag(q))
  se <- sqrt(diag(C)[p + seq_len(q)])
  df <- satterthwaite(m, Lr)
  eblups <- lapply(seq_len(q), function(j) {
    cj <- cols[[j]]
    subject <- if (is.null(subject_split)) cj$level else strsplit(cj$level, subject_split, fixed = TRUE)[[1]]
    c(prediction_entry(cj$term, cj$group, subject, cj$effect, b[j], se[j], df[j]), list(condsd = condsd[j]))
  })

  score_rows <- list()
  if (scores) {
    Lf <- cbind(X, matrix(0, nrow(X), q))
    Lc <- cbind(X, Z)
    fixed <- drop(X %*% fixef(m))
    stopifnot(max(abs(fixed - predict(m, re.form = NA))) < 1e-8 * max(abs(fixed)))
    cond <- drop(X %*% fixef(m) + Z %*% b)
    stopifnot(max(abs(cond - predict(m))) < 1e-8 * max(abs(cond)))
    fixed_se <- sqrt(rowSums((X %*% as.matrix(vcov(m))) * X))
    stopifnot(max(abs(fixed_se^2 - rowSums((Lf %*% C) * Lf))) < 1e-8 * max(fixed_se^2))
    cond_se <- sqrt(rowSums((Lc %*% C) * Lc))
    fixed_df <- satterthwaite(m, Lf)
    # The fixed df agree with lmerTest's own for single-row contrasts.
    for (i in unique(c(1, nrow(X)))) {
      ref <- lmerTest::contest1D(m, X[i, ])$df
      stopifnot(abs(fixed_df[i] - ref) < 1e-4 * ref)
    }
    cond_df <- satterthwaite(m, Lc)
    resid <- y - cond
    stopifnot(max(abs(resid - residuals(m))) < 1e-8 * max(abs(y)))
    score_rows <- score_entries(fixed, fixed_se, fixed_df, cond, cond_se, cond_df, resid)
  }
  write_eblup_fixture(list(model = name, data = data_file, method = "REML", notes = notes, confidence = 95,
                           minus2ll = REMLcrit(m), eblups = eblups, scores = score_rows))
}

# sleepstudy: random intercept and slope by subject, unstructured.
sleep <- read_data("sleepstudy.csv", c("Subject"))
f <- eblup_fixture("sleepstudy", "sleepstudy.csv", Reaction ~ Days + (Days | Subject), sleep, c("Subject"),
                   "RANDOM intercept Days / SUBJECT=Subject TYPE=UN")
# Known values for subject 308, rounded.
e308 <- Filter(function(e) e$subject[[1]] == "308", f$eblups)
stopifnot(abs(e308[[1]]$estimate - 2.2586) < 1e-4, abs(e308[[2]]$estimate - 9.1990) < 1e-4,
          abs(e308[[1]]$se - 13.100) < 1e-3, abs(e308[[2]]$se - 2.639) < 1e-3,
          abs(e308[[1]]$condsd - 12.071) < 1e-3, abs(e308[[2]]$condsd - 2.305) < 1e-3)

# Orthodont: Sex, age and their interaction with a random intercept by subject.
ortho <- read_data("orthodont.csv", c("Sex", "Subject"))
eblup_fixture("orthodont", "orthodont.csv", distance ~ age * Sex + (1 | Subject), ortho, c("Sex", "Subject"),
              "RANDOM intercept / SUBJECT=Subject")

# Oats: two random blocks, an intercept by Block and an intercept by the
# crossing of Block and Variety.
oats <- read_data("oats.csv", c("Block", "Variety", "nitro"))
eblup_fixture("oats", "oats.csv", yield ~ Variety * nitro + (1 | Block) + (1 | Block:Variety), oats,
              c("Variety", "nitro"), "RANDOM intercept / SUBJECT=Block; RANDOM intercept / SUBJECT=Block*Variety",
              subject_split = ":", scores = FALSE)

# Penicillin: crossed random factors, each a block of its own without
# subjects; the predictions are per level.
penicillin <- read_data("penicillin.csv", c("plate", "sample"))
eblup_fixture("penicillin", "penicillin.csv", diameter ~ 1 + (1 | plate) + (1 | sample), penicillin, character(0),
              "RANDOM plate; RANDOM sample", scores = FALSE)

# ---------------------------------------------------------------------------
# A residual structure together with a random block: Orthodont with a random
# intercept by subject and AR1 residuals by subject over age. nlme fits it;
# the values are computed from a dense implementation (V over all records),
# checked against nlme's likelihood and predictions first.

dense_parts <- function(theta, X, Z, y, vfun_r) {
  G <- diag(theta[1], ncol(Z))
  V <- Z %*% G %*% t(Z) + vfun_r(theta)
  Vi <- solve(V)
  XVX <- crossprod(X, Vi %*% X)
  C <- solve(XVX)
  beta <- drop(C %*% crossprod(X, Vi %*% y))
  r <- y - drop(X %*% beta)
  list(G = G, V = V, Vi = Vi, C = C, beta = beta, r = r,
       f = as.numeric(determinant(V)$modulus) + as.numeric(determinant(XVX)$modulus) + sum(r * (Vi %*% r)) +
         (length(y) - ncol(X)) * log(2 * pi))
}

# Prediction error variances of the rows [x, z] of L: z'Gz - m'V^-1 m + k'C k
# with m = Z G z and k = x - X'V^-1 m.
dense_pev <- function(theta, X, Z, y, vfun_r, L) {
  d <- dense_parts(theta, X, Z, y, vfun_r)
  p <- ncol(X)
  vapply(seq_len(nrow(L)), function(i) {
    x <- L[i, seq_len(p)]
    z <- L[i, p + seq_len(ncol(Z))]
    m <- drop(Z %*% d$G %*% z)
    k <- x - drop(crossprod(X, d$Vi %*% m))
    sum(z * (d$G %*% z)) - sum(m * (d$Vi %*% m)) + sum(k * (d$C %*% k))
  }, 0)
}

# The analytic gradient of the REML criterion, tr(P V_k) - y'P V_k P y, with
# V_k the derivatives of V from vk_fun.
dense_gradient <- function(theta, X, Z, y, vfun_r, vk_fun) {
  d <- dense_parts(theta, X, Z, y, vfun_r)
  P <- d$Vi - d$Vi %*% X %*% d$C %*% t(X) %*% d$Vi
  Py <- drop(P %*% y)
  vapply(vk_fun(theta), function(Vk) sum(P * Vk) - sum(Py * (Vk %*% Py)), 0)
}

dense_fixture <- function(name, data_file, notes, fit, theta, X, Z, y, vfun_r, vk_fun, subjects) {
  crit <- function(t) dense_parts(t, X, Z, y, vfun_r)$f
  stopifnot(abs(crit(theta) - minus2ll(fit)) < 1e-8 * abs(crit(theta)))
  theta <- newton_polish(crit, theta)
  d <- dense_parts(theta, X, Z, y, vfun_r)
  # The Hessian from the analytic gradient: second differences of the
  # criterion itself are not accurate enough.
  gr <- function(t) dense_gradient(t, X, Z, y, vfun_r, vk_fun)
  stopifnot(max(abs(gr(theta) - numDeriv::grad(crit, theta))) < 1e-6)
  H <- numDeriv::jacobian(gr, theta, method.args = deriv_args)
  A <- 2 * solve((H + t(H)) / 2)
  p <- ncol(X)
  q <- ncol(Z)
  u <- drop(d$G %*% t(Z) %*% d$Vi %*% d$r)
  stopifnot(max(abs(u - ranef(fit)[, 1])) < 1e-4 * max(abs(u)))
  satt <- function(L) {
    v <- dense_pev(theta, X, Z, y, vfun_r, L)
    J <- numDeriv::jacobian(function(t) dense_pev(t, X, Z, y, vfun_r, L), theta, method.args = deriv_args)
    list(v = v, df = vapply(seq_along(v), function(i) 2 * v[i]^2 / drop(t(J[i, ]) %*% A %*% J[i, ]), 0))
  }
  re <- satt(cbind(matrix(0, q, p), diag(q)))
  eblups <- lapply(seq_len(q), function(j)
    prediction_entry(1, "Subject", subjects[j], "Intercept", u[j], sqrt(re$v[j]), re$df[j]))
  fx <- satt(cbind(X, matrix(0, nrow(X), q)))
  cd <- satt(cbind(X, Z))
  fixed <- drop(X %*% d$beta)
  cond <- fixed + drop(Z %*% u)
  stopifnot(max(abs(cond - fitted(fit))) < 1e-4 * max(abs(cond)))
  scores <- score_entries(fixed, sqrt(fx$v), fx$df, cond, sqrt(cd$v), cd$df, y - cond)
  write_eblup_fixture(list(model = name, data = data_file, method = "REML", notes = notes, confidence = 95,
                           minus2ll = d$f, covparams = as.list(unname(theta)), eblups = eblups, scores = scores))
}

ortho_pos <- match(ortho$age, sort(unique(ortho$age)))
fit_ar1 <- lme(distance ~ age * Sex, data = ortho, random = ~ 1 | Subject,
               correlation = corAR1(form = ~ ortho_pos | Subject), method = "REML", control = lme_control)
ortho_X <- model.matrix(~ age * Sex, ortho)
ortho_Z <- model.matrix(~ 0 + Subject, ortho)
stopifnot(all(substring(colnames(ortho_Z), 8) == rownames(ranef(fit_ar1))))
rho <- cor_params(fit_ar1)
vfun_ar1 <- function(theta) {
  R <- matrix(0, nrow(ortho), nrow(ortho))
  for (g in groups_by(ortho$Subject)) {
    R[g, g] <- theta[3] * theta[2]^abs(outer(ortho_pos[g], ortho_pos[g], "-"))
  }
  R
}
# dV/dtheta for theta = (subject variance, rho, residual variance).
vk_ar1 <- function(theta) {
  n <- nrow(ortho)
  d_rho <- matrix(0, n, n)
  d_s2 <- matrix(0, n, n)
  for (g in groups_by(ortho$Subject)) {
    D <- abs(outer(ortho_pos[g], ortho_pos[g], "-"))
    d_rho[g, g] <- theta[3] * ifelse(D == 0, 0, D * theta[2]^pmax(D - 1, 0))
    d_s2[g, g] <- theta[2]^D
  }
  list(ortho_Z %*% t(ortho_Z), d_rho, d_s2)
}
dense_fixture("orthodont_ar1", "orthodont.csv",
              "RANDOM intercept / SUBJECT=Subject; REPEATED age / SUBJECT=Subject TYPE=AR1",
              fit_ar1, c(as.numeric(getVarCov(fit_ar1)), rho, sigma(fit_ar1)^2), ortho_X, ortho_Z,
              ortho$distance, vfun_ar1, vk_ar1, substring(colnames(ortho_Z), 8))
