# Reference values for the engine's accuracy tests.
#
# Fits the models of the accuracy suite with R (lme4 + lmerTest for random
# effects, nlme for residual covariance structures) and writes one JSON file
# per model into tests/data/numeric/reference/. The tests only read these
# files; R is needed only to regenerate them:
#
#   Rscript tests/numeric/reference/make_reference.R            (from the repository root)
#
# Checked with R 4.2, lme4 1.1-31, lmerTest 3.1-3, nlme 3.1-162, numDeriv,
# clubSandwich 0.5.8.
#
# Conventions, so that R's numbers are comparable with the engine's:
#
# * Factor levels are sorted ascending (numerically for numeric columns,
#   byte-wise for text), and every factor uses treatment contrasts with the
#   LAST level as the reference. The engine's overparameterized design aliases
#   exactly the last level of each factor (and every interaction cell that
#   involves a last level), so R's coefficients are the engine's non-aliased
#   columns, and the REML criteria agree (the REML log determinant depends on
#   the coding only through det of the column transformation, which is 1 here).
# * Fixed coefficients are written under the engine's column names:
#   "Intercept", a covariate by its name, a factor level as "Var=level", and
#   an interaction by joining its parts with "*" in the order of the term, e.g.
#   R's "age:SexFemale" becomes "age*Sex=Female" (see canonical_name()).
# * Covariance parameters are written on the engine's natural scale, in the
#   engine's order (random blocks in order, the residual last):
#   - lme4 reports standard deviations and correlations; they are turned into
#     variances and covariances: UN(1,1) = sd1^2, UN(2,1) = rho*sd1*sd2, ...
#   - nlme's corCompSymm gives Var = sigma^2 (rho on the off-diagonal). The
#     engine's CS is sigma_1 J + sigma^2 I, so CS = sigma^2 rho and
#     Residual = sigma^2 (1 - rho).
#   - nlme's corSymm + varIdent gives sigma_i sigma_j rho_ij; the engine's UN
#     entries are read off the marginal covariance matrix of one subject.
#   - nlme's corAR1 gives sigma^2 rho^|i-j|: "AR1 rho" = rho, Residual = sigma^2.
#   - nlme's varIdent alone (residual DIAG) gives sigma^2 delta_i^2 per
#     position: Var(i) = sigma^2 / varWeights^2 of a record at position i.
#   - nlme's varFixed(~ 1/w) gives sigma^2 / w: the engine's scale weight w
#     with Residual = sigma^2.
# * Satterthwaite degrees of freedom: for lmer fits those of lmerTest (which
#   differentiates numerically). For nlme fits lmerTest does not apply, so they
#   are computed here from an independent dense implementation of the
#   (restricted) likelihood, checked against nlme's log likelihood first: the
#   Hessian of -2 log L and the derivatives of C = (X'V^-1 X)^-1 by numerical
#   differentiation (numDeriv) in unconstrained coordinates (log variances,
#   Fisher z of correlations; the df do not depend on the coordinates at the
#   optimum), A = 2 H^-1, nu = 2 (l C l')^2 / (g' A g), and for several rows
#   the Fai-Cornelius combination (denominator df 2E/(E - q), or 0 when E <= q).
# * Covariance parameter statistics: the asymptotic covariance of the
#   covariance parameters is A = 2 H^-1, H the Hessian of -2 log L in the
#   natural parameters at the estimates (written as "covparams_cov", rows in
#   the order of "covparams"). lme4 reports no such thing, so for lmer fits
#   -2 log L is evaluated densely from V = sum_k theta_k V_k (every lmer model
#   here is linear in its natural parameters; V_k from lme4's Z matrices),
#   checked against lme4's criterion, and differentiated numerically
#   (numDeriv). For nlme fits the Hessian of the Satterthwaite set-up below
#   (unconstrained coordinates phi) is carried over by the chain rule:
#   A = J A_phi J', J = d theta / d phi. Standard error sqrt(A_kk), Wald
#   Z = estimate / SE; a variance (label "Variance", "Residual", "Var(i)",
#   "UN(i,i)") has the one-sided p-value P(Z > z) and the interval
#   [nu est / chi2_{1-a/2,nu}, nu est / chi2_{a/2,nu}] with nu = 2 Z^2; any
#   other parameter the two-sided p-value and est -/+ z_{1-a/2} SE (95%).
# * "robust": the empirical (sandwich) covariance of the fixed estimates,
#   C (sum_g X_g' V_g^-1 e_g e_g' V_g^-1 X_g) C with e = y - X beta, one term
#   per cluster g (the model's independent groups), checked against
#   clubSandwich::vcovCR(type = "CR0"); tests and intervals with it use
#   G - 1 degrees of freedom (G clusters). "residual_df": the same fit with
#   every degrees of freedom n - rank(X).
# * Type III tests: lmerTest's anova(type = 3) for lmer fits; for nlme fits the
#   same coding-invariant contrasts (lmerTest's type 3 contrasts of the
#   equivalent lm fit) tested with the estimates above. Type I tests:
#   lmerTest's anova(type = 1), or the forward Doolittle rows of X'X (weighted
#   by the scale weights when there are any). Contrasts: lmerTest's contest().
# * All fits use tight optimiser tolerances, followed by Newton steps with
#   numerical derivatives (on lme4's deviance function, or on the dense
#   criterion for nlme fits); lme4's defaults are not accurate enough for
#   comparisons at 1e-5.

suppressPackageStartupMessages({
  library(clubSandwich)
  library(lme4)
  library(lmerTest)
  library(nlme)
  library(jsonlite)
  library(numDeriv)
})

args <- commandArgs(trailingOnly = TRUE)
data_dir <- if (length(args) >= 1) args[1] else "examples/data"
out_dir <- if (length(args) >= 2) args[2] else "tests/data/numeric/reference"
dir.create(out_dir, showWarnings = FALSE, recursive = TRUE)

# The shared helpers stand next to this script.
script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

# Steps of 1% (with Richardson extrapolation) for the Hessians of the
# criterion: smaller ones lose it to the rounding error of the criterion.
hess_args <- list(eps = 1e-4, d = 0.01, zero.tol = sqrt(.Machine$double.eps / 7e-7), r = 4, v = 2)

write_fixture <- function(name, fixture) {
  write_reference_json(fixture, name)
  cat(sprintf("%-22s -2LL %.8f\n", name, fixture$minus2ll))
}

# ---------------------------------------------------------------------------
# lmer models (random effects); lmerTest provides df and Type III tests.

# The rows of lmerTest's anova table of type 1 or 3, Satterthwaite's df.
anova_rows <- function(m, type) {
  a <- anova(m, type = type, ddf = "Satterthwaite")
  lapply(seq_len(nrow(a)), function(i)
    list(term = gsub(":", "*", rownames(a)[i], fixed = TRUE), F = a[i, "F value"], numDF = a[i, "NumDF"],
         denDF = a[i, "DenDF"], p = a[i, "Pr(>F)"]))
}

# `contrasts` is a list of single-row L written as named lists over the
# engine's column names (columns that R does not have, the aliased ones,
# multiply an estimate of 0 and are left out); `joint` a list of lists of rows.
# `vk` describes V_k of each covariance parameter (see lmer_vk); `robust`
# names the cluster variable of a robust section, `residual_df` adds one.
lmer_fixture <- function(model, data_file, formula, factors, data, reml, covparams_fun, notes, vk,
                         contrasts = list(), joint = list(), robust = NULL, residual_df = FALSE) {
  m <- fit_lmer(formula, data, reml)
  X <- fixed_design(nobars(formula)[-2], data, factors)
  names_ours <- attr(X, "names_ours")
  co <- summary(m)$coefficients
  stopifnot(all(rownames(co) == colnames(X)))
  beta <- lapply(seq_len(nrow(co)), function(i)
    list(name = names_ours[i], estimate = co[i, "Estimate"], se = co[i, "Std. Error"], df = co[i, "df"],
         p = co[i, "Pr(>|t|)"]))
  has_terms <- length(attr(terms(nobars(formula)), "term.labels")) > 0
  type3 <- if (has_terms) anova_rows(m, 3) else list()
  type1 <- if (has_terms) anova_rows(m, 1) else list()
  contrasts_out <- lapply(contrasts, function(L) {
    l <- vapply(names_ours, function(n) if (is.null(L[[n]])) 0 else L[[n]], 0)
    ct <- contest(m, matrix(l, nrow = 1), joint = FALSE)
    list(L = L, estimate = ct[["Estimate"]], se = ct[["Std. Error"]], df = ct[["df"]], p = ct[["Pr(>|t|)"]])
  })
  joint_out <- lapply(joint, function(rows) {
    Lm <- t(vapply(rows, function(L) vapply(names_ours, function(n) if (is.null(L[[n]])) 0 else L[[n]], 0),
                   numeric(length(names_ours))))
    ct <- contest(m, Lm, joint = TRUE)
    list(rows = rows, F = ct[["F value"]], numDF = ct[["NumDF"]], denDF = ct[["DenDF"]], p = ct[["Pr(>F)"]])
  })
  # Covariance parameter statistics from the dense criterion.
  cp <- covparams_fun(m)
  labels <- vapply(cp, function(x) x$label, "")
  theta <- vapply(cp, function(x) x$estimate, 0)
  Vk <- lmer_vk(m, vk)
  stopifnot(length(Vk) == length(theta))
  y <- getME(m, "y")
  vfun <- function(t, g) Reduce(`+`, Map(`*`, t, Vk))[g, g, drop = FALSE]
  all_rows <- list(seq_along(y))
  crit <- function(t) dense_criterion(t, vfun, X, y, all_rows, reml)$f
  m2ll <- if (reml) REMLcrit(m) else deviance(m)
  if (abs(crit(theta) - m2ll) > 1e-8 * abs(m2ll)) stop(sprintf("%s: dense criterion differs from lme4", model))
  A <- 2 * solve(numDeriv::hessian(crit, theta, method.args = hess_args))
  out <- list(model = model, data = data_file, method = if (reml) "REML" else "ML", notes = notes,
              minus2ll = m2ll, beta = beta, covparams = covparam_stats(labels, theta, A),
              covparams_cov = matrix_rows(A), typeIII = type3, typeI = type1, contrasts = contrasts_out,
              joint = joint_out)
  if (!is.null(robust)) {
    dense <- dense_criterion(theta, vfun, X, y, all_rows, reml)
    out$robust <- robust_section(X, y, vfun(theta, seq_along(y)), dense$beta, dense$C, data[[robust]], names_ours,
                                 type3_contrasts(nobars(formula), data, X),
                                 check_vcov = clubSandwich::vcovCR(m, type = "CR0"))
  }
  if (residual_df) out$residual_df <- residual_df_section(beta, type3, length(y), ncol(X))
  out
}

un2 <- function(vc) c(vc[1, 1], vc[2, 1], vc[2, 2])

# ---------------------------------------------------------------------------
# Satterthwaite df for the nlme models, from the dense (restricted)
# likelihood.

# The df are invariant to the parameterisation at the optimum, so the
# derivatives are taken in unconstrained coordinates phi (log variances,
# Fisher z of correlations), where steps of a reasonable size stay admissible
# and rounding error stays small.
satterthwaite_setup <- function(theta, to_phi, from_phi, vfun, X, y, groups, reml) {
  phi <- to_phi(theta)
  fn <- function(ph) dense_criterion(from_phi(ph), vfun, X, y, groups, reml)$f
  H <- numDeriv::hessian(fn, phi, method.args = hess_args)
  A <- 2 * solve(H)
  p <- ncol(X)
  jac <- numDeriv::jacobian(function(ph) as.vector(dense_criterion(from_phi(ph), vfun, X, y, groups, reml)$C), phi,
                            method.args = hess_args)
  dC <- lapply(seq_along(phi), function(k) matrix(jac[, k], p, p))
  C <- dense_criterion(theta, vfun, X, y, groups, reml)$C
  list(A = A, dC = dC, C = C, grad = numDeriv::grad(function(t) dense_criterion(t, vfun, X, y, groups, reml)$f, theta,
                                                    method.args = deriv_args))
}

satt_df_row <- function(l, s) {
  g <- vapply(s$dC, function(d) drop(t(l) %*% d %*% l), 0)
  v <- drop(t(l) %*% s$C %*% l)
  2 * v^2 / drop(t(g) %*% s$A %*% g)
}

# F test of L beta = 0 with the Fai-Cornelius denominator df.
f_test <- function(L, beta, s) {
  LCL <- L %*% s$C %*% t(L)
  e <- eigen(LCL, symmetric = TRUE)
  keep <- e$values > 1e-8 * max(e$values)
  q <- sum(keep)
  U <- e$vectors[, keep, drop = FALSE]
  d <- e$values[keep]
  B <- t(U) %*% L
  Fv <- sum((B %*% beta)^2 / d) / q
  nu <- vapply(seq_len(q), function(m) satt_df_row(B[m, ], s), 0)
  ddf <- if (q == 1) nu else {
    E <- sum(ifelse(nu > 2, nu / (nu - 2), 0))
    if (E > q) 2 * E / (E - q) else 0
  }
  list(F = Fv, numDF = q, denDF = ddf, p = pf(Fv, q, ddf, lower.tail = FALSE))
}

# The F tests of a named list of contrasts, one row per term.
f_test_rows <- function(Ls, beta, s) {
  lapply(names(Ls), function(term) {
    t <- f_test(Ls[[term]], beta, s)
    list(term = gsub(":", "*", term, fixed = TRUE), F = t$F, numDF = t$numDF, denDF = t$denDF, p = t$p)
  })
}

nlme_fixture <- function(model, data_file, fixed_formula, factors, data, fit, theta, covparam_labels, vfun,
                         groups, reml, notes, to_phi, from_phi, xtx_weights = NULL, robust = NULL,
                         residual_df = FALSE) {
  X <- fixed_design(fixed_formula[-2], data, factors)
  y <- data[[all.vars(fixed_formula)[1]]]
  names_ours <- attr(X, "names_ours")
  dense <- dense_criterion(theta, vfun, X, y, groups, reml)
  m2ll_nlme <- minus2ll(fit)
  if (abs(dense$f - m2ll_nlme) > 1e-9 * abs(m2ll_nlme)) {
    stop(sprintf("%s: dense criterion %.10f vs nlme %.10f", model, dense$f, m2ll_nlme))
  }
  stopifnot(max(abs(fixef_or_coef(fit) - dense$beta)) < 1e-8 * max(1, max(abs(dense$beta))))
  # Newton steps on the dense criterion from nlme's estimates.
  theta <- newton_polish(function(t) dense_criterion(t, vfun, X, y, groups, reml)$f, theta)
  dense <- dense_criterion(theta, vfun, X, y, groups, reml)
  m2ll <- dense$f
  s <- satterthwaite_setup(theta, to_phi, from_phi, vfun, X, y, groups, reml)
  b <- dense$beta
  se <- sqrt(diag(s$C))
  beta <- lapply(seq_along(b), function(i) {
    l <- numeric(length(b)); l[i] <- 1
    df <- satt_df_row(l, s)
    list(name = names_ours[i], estimate = unname(b[i]), se = unname(se[i]), df = df,
         p = 2 * pt(abs(b[i] / se[i]), df, lower.tail = FALSE))
  })
  # Type III contrasts of the equivalent fixed-effects model, in the same coding.
  lmfit <- lm(fixed_formula, data = data)
  stopifnot(all(names(coef(lmfit)) == colnames(X)))
  Ls <- lmerTest:::get_contrasts_type3(lmfit)
  type3 <- f_test_rows(Ls, dense$beta, s)
  type3 <- Filter(function(x) x$term != "(Intercept)", type3)
  # Type I contrasts: forward Doolittle on X'X, weighted by the scale weights
  # when there are any (the engine's sequential hypotheses are those of
  # weighted least squares).
  L1s <- if (is.null(xtx_weights)) lmerTest:::get_contrasts_type1(lmfit) else {
    L <- t(lmerTest:::doolittle(crossprod(X, X * xtx_weights))$L)
    dimnames(L) <- list(colnames(X), colnames(X))
    labels <- attr(terms(fixed_formula), "term.labels")
    sel <- lapply(seq_along(labels), function(i) L[attr(X, "assign") == i, , drop = FALSE])
    names(sel) <- labels
    sel
  }
  type1 <- f_test_rows(L1s, dense$beta, s)
  # The asymptotic covariance in the natural parameters.
  J <- numDeriv::jacobian(from_phi, to_phi(theta))
  A <- J %*% s$A %*% t(J)
  out <- list(model = model, data = data_file, method = if (reml) "REML" else "ML", notes = notes,
              minus2ll = m2ll, max_abs_gradient = max(abs(s$grad)), beta = beta,
              covparams = covparam_stats(covparam_labels, theta, A), covparams_cov = matrix_rows(A),
              typeIII = type3, typeI = type1)
  if (!is.null(robust)) {
    V <- matrix(0, length(y), length(y))
    for (g in groups) V[g, g] <- vfun(theta, g)
    out$robust <- robust_section(X, y, V, dense$beta, dense$C, data[[robust]], names_ours, Ls[names(Ls) != "(Intercept)"],
                                 check_vcov = clubSandwich::vcovCR(fit, type = "CR0"))
  }
  if (residual_df) out$residual_df <- residual_df_section(beta, type3, length(y), ncol(X))
  out
}

fixef_or_coef <- function(fit) if (inherits(fit, "lme")) fixef(fit) else coef(fit)

# ---------------------------------------------------------------------------
# Covariance parameter statistics, the robust covariance and residual df.

is_variance_label <- function(label) {
  label %in% c("Variance", "Residual") || grepl("^Var\\(", label) || grepl("^UN\\((\\d+),\\1\\)$", label)
}

# Entries of "covparams" with their statistics from the asymptotic covariance A.
covparam_stats <- function(labels, theta, A, level = 0.95) {
  alpha <- 1 - level
  lapply(seq_along(labels), function(k) {
    est <- unname(theta[k])
    se <- sqrt(A[k, k])
    z <- est / se
    if (is_variance_label(labels[k])) {
      nu <- 2 * z^2
      p <- pnorm(z, lower.tail = FALSE)
      lower <- nu * est / qchisq(1 - alpha / 2, nu)
      upper <- nu * est / qchisq(alpha / 2, nu)
    } else {
      p <- 2 * pnorm(-abs(z))
      lower <- est - qnorm(1 - alpha / 2) * se
      upper <- est + qnorm(1 - alpha / 2) * se
    }
    list(label = labels[k], estimate = est, se = se, z = z, p = p, lower = lower, upper = upper)
  })
}

matrix_rows <- function(A) lapply(seq_len(nrow(A)), function(i) unname(A[i, ]))

# V_k of an lmer model that is linear in its natural parameters: each entry
# of `vk` names two columns of lme4's Z ("group.column" as in Ztlist), the
# same name twice for a variance, or is "residual".
lmer_vk <- function(m, vk) {
  Zt <- getME(m, "Ztlist")
  n <- ncol(Zt[[1]])
  lapply(vk, function(e) {
    if (identical(e, "residual")) return(diag(n))
    Zi <- t(as.matrix(Zt[[e[1]]]))
    Zj <- t(as.matrix(Zt[[e[2]]]))
    if (e[1] == e[2]) tcrossprod(Zi) else tcrossprod(Zi, Zj) + tcrossprod(Zj, Zi)
  })
}

# The empirical covariance of the fixed estimates over clusters, and tests
# with G - 1 degrees of freedom.
robust_section <- function(X, y, V, beta, C, clusters, names_ours, type3_L, check_vcov = NULL) {
  e <- drop(y - X %*% beta)
  meat <- matrix(0, ncol(X), ncol(X))
  for (g in split(seq_along(y), clusters)) {
    u <- crossprod(X[g, , drop = FALSE], solve(V[g, g, drop = FALSE], e[g]))
    meat <- meat + tcrossprod(u)
  }
  CR <- C %*% meat %*% C
  if (!is.null(check_vcov)) {
    ref <- as.matrix(check_vcov)
    if (max(abs(ref - CR)) > 1e-6 * max(abs(CR))) stop("robust covariance differs from clubSandwich")
  }
  G <- length(unique(clusters))
  df <- G - 1
  se <- sqrt(diag(CR))
  b <- lapply(seq_along(beta), function(i)
    list(name = names_ours[i], estimate = unname(beta[i]), se = unname(se[i]), df = df,
         p = 2 * pt(abs(beta[i] / se[i]), df, lower.tail = FALSE)))
  t3 <- lapply(names(type3_L), function(term) {
    L <- type3_L[[term]]
    Lb <- L %*% beta
    q <- qr(L)$rank
    Fv <- drop(t(Lb) %*% solve(L %*% CR %*% t(L), Lb)) / q
    list(term = gsub(":", "*", term, fixed = TRUE), F = Fv, numDF = q, denDF = df,
         p = pf(Fv, q, df, lower.tail = FALSE))
  })
  list(clusters = G, cov = matrix_rows(CR), beta = b, typeIII = t3)
}

# Every degrees of freedom n - rank(X); estimates, standard errors and F as
# with Satterthwaite's df.
residual_df_section <- function(beta_entries, type3_entries, n, p) {
  df <- n - p
  list(df = df,
       beta = lapply(beta_entries, function(b)
         list(name = b$name, df = df, p = 2 * pt(abs(b$estimate / b$se), df, lower.tail = FALSE))),
       typeIII = lapply(type3_entries, function(t)
         list(term = t$term, F = t$F, numDF = t$numDF, denDF = df, p = pf(t$F, t$numDF, df, lower.tail = FALSE))))
}

type3_contrasts <- function(fixed_formula, data, X) {
  lmfit <- lm(fixed_formula, data = data)
  stopifnot(all(names(coef(lmfit)) == colnames(X)))
  Ls <- lmerTest:::get_contrasts_type3(lmfit)
  Ls[names(Ls) != "(Intercept)"]
}

# ---------------------------------------------------------------------------
# The models.

# V_k of a random intercept and slope b by group g, unstructured; and of one
# variance per named column of Z.
vk_un <- function(g, b) list(c(paste0(g, ".(Intercept)"), paste0(g, ".(Intercept)")),
                             c(paste0(g, ".(Intercept)"), paste0(g, ".", b)), c(paste0(g, ".", b), paste0(g, ".", b)),
                             "residual")
vk_vc <- function(...) c(lapply(c(...), function(z) c(z, z)), list("residual"))

# sleepstudy: random intercept and slope by subject, unstructured and VC.
sleep <- read_data("sleepstudy.csv", c("Subject"))
write_fixture("sleepstudy_un", lmer_fixture(
  "sleepstudy_un", "sleepstudy.csv", Reaction ~ Days + (Days | Subject), c("Subject"), sleep, TRUE,
  function(m) { v <- VarCorr(m)$Subject; vc_list(c("UN(1,1)", "UN(2,1)", "UN(2,2)", "Residual"), c(un2(v), sigma(m)^2)) },
  "RANDOM intercept Days / SUBJECT=Subject TYPE=UN", vk_un("Subject", "Days"), robust = "Subject",
  residual_df = TRUE))
write_fixture("sleepstudy_un_ml", lmer_fixture(
  "sleepstudy_un_ml", "sleepstudy.csv", Reaction ~ Days + (Days | Subject), c("Subject"), sleep, FALSE,
  function(m) { v <- VarCorr(m)$Subject; vc_list(c("UN(1,1)", "UN(2,1)", "UN(2,2)", "Residual"), c(un2(v), sigma(m)^2)) },
  "ML; RANDOM intercept Days / SUBJECT=Subject TYPE=UN", vk_un("Subject", "Days")))
write_fixture("sleepstudy_vc", lmer_fixture(
  "sleepstudy_vc", "sleepstudy.csv", Reaction ~ Days + (1 | Subject) + (0 + Days | Subject), c("Subject"), sleep, TRUE,
  function(m) { v <- VarCorr(m); vc_list(c("Variance", "Variance", "Residual"),
                c(v[[1]][1, 1], v[[2]][1, 1], sigma(m)^2)) },
  "RANDOM intercept Days / SUBJECT=Subject TYPE=VC (intercept variance first)",
  vk_vc("Subject.(Intercept)", "Subject.Days")))

# Orthodont: Sex, age and their interaction; random intercept, random
# intercept and slope, and residual CS, UN and AR1 by Subject over age.
ortho <- read_data("orthodont.csv", c("Sex", "Subject"))
write_fixture("orthodont_ri", lmer_fixture(
  "orthodont_ri", "orthodont.csv", distance ~ age * Sex + (1 | Subject), c("Sex", "Subject"), ortho, TRUE,
  function(m) vc_list(c("Variance", "Residual"), c(VarCorr(m)$Subject[1, 1], sigma(m)^2)),
  "RANDOM intercept / SUBJECT=Subject", vk_vc("Subject.(Intercept)")))
write_fixture("orthodont_un_g", lmer_fixture(
  "orthodont_un_g", "orthodont.csv", distance ~ age * Sex + (age | Subject), c("Sex", "Subject"), ortho, TRUE,
  function(m) { v <- VarCorr(m)$Subject; vc_list(c("UN(1,1)", "UN(2,1)", "UN(2,2)", "Residual"), c(un2(v), sigma(m)^2)) },
  "RANDOM intercept age / SUBJECT=Subject TYPE=UN", vk_un("Subject", "age")))

ortho_groups <- groups_by(ortho$Subject)
ortho_pos <- match(ortho$age, sort(unique(ortho$age)))
ortho_X_formula <- distance ~ age * Sex

fit_cs <- gls(distance ~ age * Sex, data = ortho, correlation = corCompSymm(form = ~ 1 | Subject),
              method = "REML", control = gls_control)
rho <- cor_params(fit_cs)
s2 <- sigma(fit_cs)^2
vfun_cs <- function(theta, g) { m <- length(g); matrix(theta[1], m, m) + diag(theta[2], m) }
cs_to_phi <- function(theta) c(theta[1], log(theta[2]))
cs_from_phi <- function(phi) c(phi[1], exp(phi[2]))
write_fixture("orthodont_cs", nlme_fixture(
  "orthodont_cs", "orthodont.csv", ortho_X_formula, c("Sex"), ortho, fit_cs, c(s2 * rho, s2 * (1 - rho)),
  c("CS", "Residual"), vfun_cs, ortho_groups, TRUE, "residual CS by Subject", cs_to_phi, cs_from_phi,
  robust = "Subject"))

fit_cs_ml <- gls(distance ~ age * Sex, data = ortho, correlation = corCompSymm(form = ~ 1 | Subject),
                 method = "ML", control = gls_control)
rho <- cor_params(fit_cs_ml)
s2 <- sigma(fit_cs_ml)^2
write_fixture("orthodont_cs_ml", nlme_fixture(
  "orthodont_cs_ml", "orthodont.csv", ortho_X_formula, c("Sex"), ortho, fit_cs_ml, c(s2 * rho, s2 * (1 - rho)),
  c("CS", "Residual"), vfun_cs, ortho_groups, FALSE, "ML; residual CS by Subject", cs_to_phi, cs_from_phi))

un_matrix <- function(theta, t) {
  S <- matrix(0, t, t)
  k <- 1
  for (i in 1:t) for (j in 1:i) { S[i, j] <- theta[k]; S[j, i] <- theta[k]; k <- k + 1 }
  S
}
un_params <- function(S) {
  out <- c()
  for (i in seq_len(nrow(S))) for (j in 1:i) out <- c(out, S[i, j])
  out
}
un_labels <- function(t) {
  out <- c()
  for (i in 1:t) for (j in 1:i) out <- c(out, sprintf("UN(%d,%d)", i, j))
  out
}

ortho$pos <- ortho_pos
fit_un <- gls(distance ~ age * Sex, data = ortho, correlation = corSymm(form = ~ pos | Subject),
              weights = varIdent(form = ~ 1 | pos), method = "REML", control = gls_control)
first <- ortho$Subject == levels(ortho$Subject)[1]
stopifnot(all(ortho$pos[first] == 1:4))
S_un <- unclass(getVarCov(fit_un, individual = levels(ortho$Subject)[1]))
vfun_un <- function(theta, g) un_matrix(theta, 4)[ortho_pos[g], ortho_pos[g]]
un_diag <- c(1, 3, 6, 10)
un_to_phi <- function(theta) { theta[un_diag] <- log(theta[un_diag]); theta }
un_from_phi <- function(phi) { phi[un_diag] <- exp(phi[un_diag]); phi }
write_fixture("orthodont_un", nlme_fixture(
  "orthodont_un", "orthodont.csv", ortho_X_formula, c("Sex"), ortho, fit_un, un_params(S_un),
  un_labels(4), vfun_un, ortho_groups, TRUE, "residual UN by Subject over age", un_to_phi, un_from_phi,
  residual_df = TRUE))

ar1_matrix <- function(rho, s2, t) s2 * rho^abs(outer(1:t, 1:t, "-"))
ar1_to_phi <- function(theta) c(atanh(theta[1]), log(theta[2]))
ar1_from_phi <- function(phi) c(tanh(phi[1]), exp(phi[2]))

fit_ar1 <- gls(distance ~ age * Sex, data = ortho, correlation = corAR1(form = ~ pos | Subject),
               method = "REML", control = gls_control)
rho <- cor_params(fit_ar1)
vfun_ar1 <- function(theta, g) ar1_matrix(theta[1], theta[2], 4)[ortho_pos[g], ortho_pos[g]]
write_fixture("orthodont_ar1", nlme_fixture(
  "orthodont_ar1", "orthodont.csv", ortho_X_formula, c("Sex"), ortho, fit_ar1, c(rho, sigma(fit_ar1)^2),
  c("AR1 rho", "Residual"), vfun_ar1, ortho_groups, TRUE, "residual AR1 by Subject over age", ar1_to_phi,
  ar1_from_phi))

# Scale weights w = age / 10 (residual variance sigma^2 / w) with a random
# intercept: nlme's varFixed(~ 1 / w).
ortho$invw <- 10 / ortho$age
fit_w <- lme(distance ~ age * Sex, data = ortho, random = ~ 1 | Subject, weights = varFixed(~ invw),
             method = "REML", control = lme_control)
vfun_w <- function(theta, g) { m <- length(g); matrix(theta[1], m, m) + diag(theta[2] * ortho$invw[g], m) }
log_to_phi <- function(theta) log(theta)
log_from_phi <- function(phi) exp(phi)
write_fixture("orthodont_ri_weighted", nlme_fixture(
  "orthodont_ri_weighted", "orthodont.csv", ortho_X_formula, c("Sex"), ortho, fit_w,
  c(as.numeric(getVarCov(fit_w))[1], sigma(fit_w)^2), c("Variance", "Residual"), vfun_w, ortho_groups, TRUE,
  "RANDOM intercept / SUBJECT=Subject; scale weight age/10", log_to_phi, log_from_phi,
  xtx_weights = 1 / ortho$invw))

# Residual DIAG: a variance per age, no correlation.
fit_diag <- gls(distance ~ age * Sex, data = ortho, weights = varIdent(form = ~ 1 | pos), method = "REML",
                control = gls_control)
# varWeights are 1 / (relative sd) per record in data order (checked by the
# dense criterion against nlme's likelihood).
w_diag <- varWeights(fit_diag$modelStruct$varStruct)
var_diag <- sigma(fit_diag)^2 / w_diag[match(1:4, ortho_pos)]^2
vfun_diag <- function(theta, g) diag(theta[ortho_pos[g]], length(g))
write_fixture("orthodont_diag", nlme_fixture(
  "orthodont_diag", "orthodont.csv", ortho_X_formula, c("Sex"), ortho, fit_diag, unname(var_diag),
  sprintf("Var(%d)", 1:4), vfun_diag, ortho_groups, TRUE, "residual DIAG over age", log_to_phi, log_from_phi))

# Oats (split plot): Variety*nitro with nitro as a factor; Block and
# Block*Variety random. Contrasts: differences of varieties averaged over the
# nitrogen levels, alone and jointly.
variety_contrast <- function(a, b) {
  L <- list()
  L[[paste0("Variety=", a)]] <- 1
  L[[paste0("Variety=", b)]] <- -1
  for (n in c("0", "0.2", "0.4", "0.6")) {
    L[[paste0("Variety=", a, "*nitro=", n)]] <- 0.25
    L[[paste0("Variety=", b, "*nitro=", n)]] <- -0.25
  }
  L
}
oats <- read_data("oats.csv", c("Block", "Variety", "nitro"))
write_fixture("oats", lmer_fixture(
  "oats", "oats.csv", yield ~ Variety * nitro + (1 | Block) + (1 | Block:Variety), c("Variety", "nitro"), oats, TRUE,
  function(m) { v <- VarCorr(m); vc_list(c("Variance", "Variance", "Residual"),
                c(v[["Block"]][1, 1], v[["Block:Variety"]][1, 1], sigma(m)^2)) },
  "RANDOM Block Block*Variety (VC, Block first)", vk_vc("Block.(Intercept)", "Block:Variety.(Intercept)"),
  contrasts = list(variety_contrast("Golden Rain", "Marvellous"), variety_contrast("Marvellous", "Victory")),
  joint = list(list(variety_contrast("Golden Rain", "Marvellous"), variety_contrast("Marvellous", "Victory"))),
  residual_df = TRUE))

# Machines: Machine fixed; Worker and Worker*Machine random.
machines <- read_data("machines.csv", c("Worker", "Machine"))
write_fixture("machines", lmer_fixture(
  "machines", "machines.csv", score ~ Machine + (1 | Worker) + (1 | Worker:Machine), c("Machine"), machines, TRUE,
  function(m) { v <- VarCorr(m); vc_list(c("Variance", "Variance", "Residual"),
                c(v[["Worker"]][1, 1], v[["Worker:Machine"]][1, 1], sigma(m)^2)) },
  "RANDOM Worker Worker*Machine (VC, Worker first)", vk_vc("Worker.(Intercept)", "Worker:Machine.(Intercept)"),
  robust = "Worker"))

# Pastes: cask nested in batch.
pastes <- read_data("pastes.csv", c("batch", "cask"))
write_fixture("pastes", lmer_fixture(
  "pastes", "pastes.csv", strength ~ 1 + (1 | batch) + (1 | batch:cask), character(0), pastes, TRUE,
  function(m) { v <- VarCorr(m); vc_list(c("Variance", "Variance", "Residual"),
                c(v[["batch"]][1, 1], v[["batch:cask"]][1, 1], sigma(m)^2)) },
  "RANDOM batch cask(batch) (VC, batch first)", vk_vc("batch.(Intercept)", "batch:cask.(Intercept)")))

# Dyestuff: one random factor.
dyestuff <- read_data("dyestuff.csv", c("Batch"))
write_fixture("dyestuff", lmer_fixture(
  "dyestuff", "dyestuff.csv", Yield ~ 1 + (1 | Batch), character(0), dyestuff, TRUE,
  function(m) vc_list(c("Variance", "Residual"), c(VarCorr(m)$Batch[1, 1], sigma(m)^2)),
  "RANDOM Batch", vk_vc("Batch.(Intercept)")))

# Penicillin: crossed random factors.
penicillin <- read_data("penicillin.csv", c("plate", "sample"))
write_fixture("penicillin", lmer_fixture(
  "penicillin", "penicillin.csv", diameter ~ 1 + (1 | plate) + (1 | sample), character(0), penicillin, TRUE,
  function(m) { v <- VarCorr(m); vc_list(c("Variance", "Variance", "Residual"),
                c(v[["plate"]][1, 1], v[["sample"]][1, 1], sigma(m)^2)) },
  "RANDOM plate sample (two blocks, crossed; plate first)", vk_vc("plate.(Intercept)", "sample.(Intercept)")))

# BodyWeight: Diet*Time with Time a covariate; residual AR1 by Rat over the
# time points.
bw <- read_data("bodyweight.csv", c("Diet", "Rat"))
bw_times <- sort(unique(bw$Time))
bw$pos <- match(bw$Time, bw_times)
bw_groups <- groups_by(bw$Rat)
stopifnot(all(vapply(bw_groups, function(g) all(diff(bw$pos[g]) == 1), TRUE)))
fit_bw <- gls(weight ~ Diet * Time, data = bw, correlation = corAR1(form = ~ pos | Rat),
              method = "REML", control = gls_control)
rho <- cor_params(fit_bw)
vfun_bw <- function(theta, g) ar1_matrix(theta[1], theta[2], 11)[bw$pos[g], bw$pos[g]]
write_fixture("bodyweight_ar1", nlme_fixture(
  "bodyweight_ar1", "bodyweight.csv", weight ~ Diet * Time, c("Diet"), bw, fit_bw, c(rho, sigma(fit_bw)^2),
  c("AR1 rho", "Residual"), vfun_bw, bw_groups, TRUE, "residual AR1 by Rat over Time", ar1_to_phi, ar1_from_phi))
