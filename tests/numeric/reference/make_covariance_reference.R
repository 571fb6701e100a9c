# Reference values for the engine's covariance structures.
#
# Fits one model per covariance structure (and a few on the random side)
# with R and writes one JSON file per model into
# tests/data/numeric/reference/covariance/, together with the simulated data
# sets the models use. The tests only read these files; R is needed only to
# regenerate them:
#
#   Rscript tests/numeric/reference/make_covariance_reference.R   (from the repository root)
#
# Checked with R 4.2, nlme 3.1-162, glmmTMB 1.1.5, numDeriv 2016.8-1.1, jsonlite.
#
# How each reference value is obtained:
#
# * A package fit (nlme's gls or lme, or glmmTMB) of a model that is the
#   structure itself or an exact reparameterisation of it, whenever one
#   exists. Its estimates are turned into the engine's parameters (see
#   `oracle` in each file), and the -2 log likelihood of an independent dense
#   implementation below, with the engine's definition of the structure, must
#   equal the package's at those parameters. This checks both the conversion
#   and the definition.
# * Structures without a package equivalent (AD1, HF, SP(LINL), and random
#   ARH1) are fitted by minimising the same dense criterion with optim from
#   several starting points.
# * Either way the estimates are then polished by Newton steps on the dense
#   criterion with numerical derivatives, so that the reference does not
#   inherit a package optimiser's stopping error (glmmTMB's in particular).
#   The largest remaining gradient is written as `max_abs_gradient`.
# * Standard errors of the covariance parameters: sqrt(diag(2 H^-1)) with H
#   the Hessian of -2 log L in the engine's parameters, taken numerically in
#   the unconstrained coordinates (where steps of 2% stay admissible; small
#   steps lose digits to rounding) and carried over by the Jacobian, which is
#   exact at the optimum. Standard errors of the fixed effects:
#   sqrt(diag((X'V^-1 X)^-1)).
#
# Conventions shared with make_reference.R: factor levels sorted ascending,
# treatment contrasts with the last level as reference (the engine's
# overparameterized design aliases the last level), fixed coefficients under
# the engine's column names ("Intercept", "x", "Var=level", "x*Var=level").
# -2 log L includes (N - p) log 2 pi for REML and N log 2 pi for ML.

suppressPackageStartupMessages({
  library(nlme)
  library(glmmTMB)
  library(jsonlite)
  library(numDeriv)
})

args <- commandArgs(trailingOnly = TRUE)
out_dir <- if (length(args) >= 1) args[1] else "tests/data/numeric/reference/covariance"
dir.create(out_dir, showWarnings = FALSE, recursive = TRUE)

# The shared helpers stand next to this script.
script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

tmb_control <- glmmTMBControl(optCtrl = list(iter.max = 10000, eval.max = 10000, rel.tol = 1e-14, x.tol = 1e-12))

# ---------------------------------------------------------------------------
# Unconstrained coordinates by kind of parameter.
to_free <- function(theta, kinds) {
  vapply(seq_along(theta), function(k) switch(kinds[k],
    variance = log(theta[k]), correlation = atanh(theta[k]), unit = qlogis(theta[k]), range = log(theta[k]),
    free = theta[k]), 0)
}
from_free <- function(phi, kinds) {
  vapply(seq_along(phi), function(k) switch(kinds[k],
    variance = exp(phi[k]), correlation = tanh(phi[k]), unit = plogis(phi[k]), range = exp(phi[k]),
    free = phi[k]), 0)
}
# d theta / d phi.
free_jacobian <- function(theta, kinds) {
  vapply(seq_along(theta), function(k) switch(kinds[k],
    variance = theta[k], correlation = 1 - theta[k]^2, unit = theta[k] * (1 - theta[k]), range = theta[k],
    free = 1), 0)
}
hessian_args <- list(eps = 1e-4, d = 0.02, zero.tol = 1e-8, r = 6, v = 2)

# Newton steps in the unconstrained coordinates while they decrease f.
newton_polish_free <- function(f, theta, kinds, steps = 8) {
  g <- function(phi) f(from_free(phi, kinds))
  phi <- to_free(theta, kinds)
  fx <- g(phi)
  for (i in seq_len(steps)) {
    gr <- numDeriv::grad(g, phi, method.args = deriv_args)
    H <- numDeriv::hessian(g, phi, method.args = deriv_args)
    step <- tryCatch(solve(H, gr), error = function(e) NULL)
    if (is.null(step)) break
    lambda <- 1
    accepted <- FALSE
    while (lambda > 1e-3) {
      fn <- tryCatch(g(phi - lambda * step), error = function(e) Inf)
      if (is.finite(fn) && fn <= fx) {
        phi <- phi - lambda * step
        fx <- fn
        accepted <- TRUE
        break
      }
      lambda <- lambda / 2
    }
    if (!accepted || max(abs(gr)) < 1e-9) break
  }
  from_free(phi, kinds)
}

# Minimises f from several starting points (for structures without a package fit).
dense_fit <- function(f, starts, kinds) {
  best <- NULL
  for (s in starts) {
    g <- function(phi) { v <- f(from_free(phi, kinds)); if (is.finite(v)) v else 1e100 }
    o <- optim(to_free(s, kinds), g, method = "BFGS", control = list(maxit = 5000, reltol = 1e-14))
    o <- optim(o$par, g, method = "Nelder-Mead", control = list(maxit = 20000, reltol = 1e-15))
    o <- optim(o$par, g, method = "BFGS", control = list(maxit = 5000, reltol = 1e-15))
    if (is.null(best) || o$value < best$value) best <- o
  }
  from_free(best$par, kinds)
}

# Writes the reference of one model. `theta0`: the package's estimates in
# the engine's parameters (NULL when there is no package fit, then `starts`
# are used); `m2ll_pkg`: the package's -2 log L at theta0.
# `profile`: for a structure (phi, sigma^2), values of phi at which -2 log L
# with sigma^2 at its optimum must not fall below the reference minimum:
# spatial likelihoods can have several minima, and the reference must be the
# lowest.
reference <- function(name, model, data, fixed_formula, factors, vfun, groups, labels, kinds, reml, oracle,
                      theta0 = NULL, m2ll_pkg = NULL, starts = NULL, tol_check = 1e-8, canon = identity,
                      profile = NULL) {
  X <- fixed_design(fixed_formula[-2], data, factors)
  y <- data[[all.vars(fixed_formula)[1]]]
  crit <- function(t) tryCatch(dense_criterion(t, vfun, X, y, groups, reml)$f, error = function(e) Inf)
  check <- NA
  if (!is.null(theta0)) {
    check <- crit(theta0) - m2ll_pkg
    if (!is.finite(check) || abs(check) > tol_check * abs(m2ll_pkg)) {
      stop(sprintf("%s: dense criterion %.10f vs package %.10f", name, crit(theta0), m2ll_pkg))
    }
  } else {
    theta0 <- dense_fit(crit, starts, kinds)
  }
  theta <- canon(newton_polish_free(crit, theta0, kinds))
  dense <- dense_criterion(theta, vfun, X, y, groups, reml)
  for (phi in profile) {
    d1 <- tryCatch(dense_criterion(c(phi, 1), vfun, X, y, groups, reml), error = function(e) list(f = Inf))
    if (!is.finite(d1$f)) next
    s2 <- d1$rVr / (length(y) - if (reml) ncol(X) else 0)
    if (crit(c(phi, s2)) < dense$f - 1e-6) stop(sprintf("%s: lower -2 log L at phi = %g", name, phi))
  }
  gr <- numDeriv::grad(crit, theta, method.args = deriv_args)
  H_free <- numDeriv::hessian(function(phi) crit(from_free(phi, kinds)), to_free(theta, kinds),
                              method.args = hessian_args)
  se_theta <- sqrt(diag(2 * solve(H_free))) * abs(free_jacobian(theta, kinds))
  se_beta <- sqrt(diag(dense$C))
  names_ours <- attr(X, "names_ours")
  beta <- lapply(seq_along(dense$beta), function(i)
    list(name = names_ours[i], estimate = unname(dense$beta[i]), se = unname(se_beta[i])))
  fixture <- c(list(model = name), model, list(
    method = if (reml) "REML" else "ML", oracle = oracle,
    package_minus2ll = if (is.null(m2ll_pkg)) NULL else m2ll_pkg,
    minus2ll = dense$f, max_abs_gradient = max(abs(gr)), beta = beta,
    covparams = vc_list(labels, theta, se_theta)))
  fixture <- Filter(Negate(is.null), fixture)
  write_reference_json(fixture, name)
  cat(sprintf("%-24s -2LL %.8f  package %s  |grad| %.1e\n", name, dense$f,
              if (is.null(m2ll_pkg)) "-" else sprintf("%.8f", m2ll_pkg), max(abs(gr))))
  invisible(theta)
}

# ---------------------------------------------------------------------------
# Structure matrices with the engine's parameters.

lag_matrix <- function(t) abs(outer(1:t, 1:t, "-"))
dcd <- function(v, R) diag(sqrt(v), length(v)) %*% R %*% diag(sqrt(v), length(v))

arh1_matrix <- function(th, t) dcd(th[1:t], th[t + 1]^lag_matrix(t))
csh_matrix <- function(th, t) { R <- matrix(th[t + 1], t, t); diag(R) <- 1; dcd(th[1:t], R) }
tph_matrix <- function(th, t) { r <- c(1, th[(t + 1):(2 * t - 1)]); dcd(th[1:t], matrix(r[lag_matrix(t) + 1], t, t)) }
unr_matrix <- function(th, t) {
  R <- diag(t)
  k <- t + 1
  for (i in 2:t) for (j in 1:(i - 1)) { R[i, j] <- R[j, i] <- th[k]; k <- k + 1 }
  dcd(th[1:t], R)
}
ad1_matrix <- function(th, t) {
  rho <- th[(t + 1):(2 * t - 1)]
  R <- diag(t)
  for (i in 1:(t - 1)) for (j in (i + 1):t) R[i, j] <- R[j, i] <- prod(rho[i:(j - 1)])
  dcd(th[1:t], R)
}
tp_matrix <- function(th, t) { s <- c(th[t], th[1:(t - 1)]); matrix(s[lag_matrix(t) + 1], t, t) }
arma11_matrix <- function(th, t) {
  L <- lag_matrix(t)
  S <- th[3] * th[2] * th[1]^pmax(L - 1, 0)
  diag(S) <- th[3]
  S
}
csr_matrix <- function(th, t) { S <- matrix(th[2] * th[1], t, t); diag(S) <- th[2]; S }
hf_matrix <- function(th, t) {
  v <- th[1:t]
  S <- outer(v, v, "+") / 2 - th[t + 1]
  diag(S) <- v
  S
}
fa1_matrix <- function(th, t) { l <- th[1:t]; tcrossprod(l) + diag(th[t + 1], t) }
fah1_matrix <- function(th, t) { l <- th[1:t]; tcrossprod(l) + diag(th[(t + 1):(2 * t)], t) }

# Spatial: sigma^2 f(d) over the distance matrix D (f(0) = 1 on the diagonal).
sp_matrix <- function(type, phi, s2, D) {
  f <- switch(type,
    POW = phi^D,
    EXP = exp(-D / phi),
    GAU = exp(-(D / phi)^2),
    LIN = ifelse(phi * D < 1, 1 - phi * D, 0),
    LINL = ifelse(D > 0 & phi * log(D) < 1, 1 - phi * log(D), 0),
    SPH = ifelse(D < phi, 1 - 1.5 * D / phi + 0.5 * (D / phi)^3, 0))
  diag(f) <- 1
  s2 * f
}

# ---------------------------------------------------------------------------
# Residual structures on Orthodont: distance ~ age * Sex, four ages per
# subject, REML.

ortho_file <- "examples/data/orthodont.csv"
ortho <- code_factors(read.csv(ortho_file, stringsAsFactors = FALSE), c("Sex", "Subject"))
ortho$pos <- match(ortho$age, sort(unique(ortho$age)))
ortho$posf <- factor(ortho$pos)
ortho_groups <- groups_by(ortho$Subject)
ortho_formula <- distance ~ age * Sex
ortho_model <- function(structure) list(
  data = ortho_file, structure = structure, side = "residual", response = "distance",
  factors = c("Sex", "Subject"), fixed = c("Intercept", "age", "Sex", "age*Sex"),
  residual = list(subject = "Subject", index = "age"))
ortho_vfun <- function(mat) function(th, g) mat(th, 4)[ortho$pos[g], ortho$pos[g], drop = FALSE]
var_labels <- sprintf("Var(%d)", 1:4)
# nlme's variance weights are 1 / (relative sd): the variance at position i.
position_variances <- function(fit) {
  w <- varWeights(fit$modelStruct$varStruct)
  sigma(fit)^2 / w[match(1:4, ortho$pos)]^2
}
# The autocorrelations at lags 1..3 of an nlme ARMA structure.
arma_acf <- function(fit) {
  R <- corMatrix(fit$modelStruct$corStruct)[[1]]
  R[1, 2:4]
}

fit <- gls(ortho_formula, ortho, correlation = corAR1(form = ~ pos | Subject), weights = varIdent(form = ~ 1 | pos),
           method = "REML", control = gls_control)
reference("orthodont_arh1", ortho_model("ARH1"), ortho, ortho_formula, "Sex", ortho_vfun(arh1_matrix), ortho_groups,
          c(var_labels, "ARH1 rho"), c(rep("variance", 4), "correlation"), TRUE,
          "nlme gls, corAR1 with varIdent by position: Var(i) = sigma^2 delta_i^2, rho = Phi",
          theta0 = c(position_variances(fit), cor_params(fit)),
          m2ll_pkg = minus2ll(fit))

reference("orthodont_ad1", ortho_model("AD1"), ortho, ortho_formula, "Sex", ortho_vfun(ad1_matrix), ortho_groups,
          c(var_labels, sprintf("Rho(%d)", 1:3)), c(rep("variance", 4), rep("correlation", 3)), TRUE,
          "dense REML by optim: no package fits first-order ante-dependence",
          starts = list(c(5, 5, 5, 5, 0.5, 0.5, 0.5), c(4, 3, 6, 4, 0.2, 0.8, 0.4)))

fit <- gls(ortho_formula, ortho, correlation = corARMA(form = ~ pos | Subject, p = 3), method = "REML",
           control = gls_control)
s2 <- sigma(fit)^2
reference("orthodont_tp", ortho_model("TP"), ortho, ortho_formula, "Sex", ortho_vfun(tp_matrix), ortho_groups,
          c("TP(1)", "TP(2)", "TP(3)", "Residual"), c("free", "free", "free", "variance"), TRUE,
          "nlme gls, corARMA(p = 3), which spans every Toeplitz correlation over 4 positions: TP(k) = sigma^2 acf(k)",
          theta0 = c(s2 * arma_acf(fit), s2), m2ll_pkg = minus2ll(fit))

fit <- gls(ortho_formula, ortho, correlation = corARMA(form = ~ pos | Subject, p = 1, q = 1), method = "REML",
           control = gls_control)
reference("orthodont_arma11", ortho_model("ARMA11"), ortho, ortho_formula, "Sex", ortho_vfun(arma11_matrix),
          ortho_groups, c("ARMA11 rho", "ARMA11 gamma", "Residual"), c("correlation", "correlation", "variance"), TRUE,
          "nlme gls, corARMA(p = 1, q = 1): rho = Phi1, gamma = the lag-1 autocorrelation",
          theta0 = c(cor_params(fit)[1], arma_acf(fit)[1], sigma(fit)^2),
          m2ll_pkg = minus2ll(fit))

fit <- gls(ortho_formula, ortho, correlation = corCompSymm(form = ~ 1 | Subject),
           weights = varIdent(form = ~ 1 | pos), method = "REML", control = gls_control)
reference("orthodont_csh", ortho_model("CSH"), ortho, ortho_formula, "Sex", ortho_vfun(csh_matrix), ortho_groups,
          c(var_labels, "CSH rho"), c(rep("variance", 4), "correlation"), TRUE,
          "nlme gls, corCompSymm with varIdent by position",
          theta0 = c(position_variances(fit), cor_params(fit)),
          m2ll_pkg = minus2ll(fit))

fit <- gls(ortho_formula, ortho, correlation = corCompSymm(form = ~ 1 | Subject), method = "REML",
           control = gls_control)
reference("orthodont_csr", ortho_model("CSR"), ortho, ortho_formula, "Sex", ortho_vfun(csr_matrix), ortho_groups,
          c("CSR rho", "Residual"), c("correlation", "variance"), TRUE,
          "nlme gls, corCompSymm: CSR rho = Rho, Residual = sigma^2",
          theta0 = c(cor_params(fit), sigma(fit)^2),
          m2ll_pkg = minus2ll(fit))

ortho_tmb <- ortho
ortho_tmb$Subject <- factor(as.character(ortho$Subject))
fit <- glmmTMB(distance ~ age * Sex + rr(0 + posf | Subject, d = 1), data = ortho_tmb, REML = TRUE,
               control = tmb_control)
lambda <- fit$obj$env$parList()$theta
fa_canon <- function(t) if (t[1] < 0) c(-t[1:4], t[-(1:4)]) else t
reference("orthodont_fa1", ortho_model("FA1"), ortho, ortho_formula, "Sex", ortho_vfun(fa1_matrix), ortho_groups,
          c(sprintf("FA(%d,1)", 1:4), "FA diagonal"), c(rep("free", 4), "variance"), TRUE,
          "glmmTMB, a rank-1 random term rr(0 + position | Subject) and the residual variance: R = lambda lambda' + d I",
          theta0 = fa_canon(c(lambda, sigma(fit)^2)), m2ll_pkg = minus2ll(fit), tol_check = 1e-7, canon = fa_canon)

fit <- glmmTMB(distance ~ age * Sex + rr(0 + posf | Subject, d = 1), dispformula = ~ posf, data = ortho_tmb,
               REML = TRUE, control = tmb_control)
lambda <- fit$obj$env$parList()$theta
betad <- fit$obj$env$parList()$betad
# The dispersion model is log sigma^2 with treatment contrasts against position 1.
d_pos <- exp(betad[1] + c(0, betad[-1]))
reference("orthodont_fah1", ortho_model("FAH1"), ortho, ortho_formula, "Sex", ortho_vfun(fah1_matrix), ortho_groups,
          c(sprintf("FA(%d,1)", 1:4), sprintf("FA diagonal(%d)", 1:4)), c(rep("free", 4), rep("variance", 4)), TRUE,
          "glmmTMB, rr(0 + position | Subject) with a residual variance per position: R = lambda lambda' + diag(d)",
          theta0 = fa_canon(c(lambda, d_pos)), m2ll_pkg = minus2ll(fit), tol_check = 1e-7, canon = fa_canon)

reference("orthodont_hf", ortho_model("HF"), ortho, ortho_formula, "Sex", ortho_vfun(hf_matrix), ortho_groups,
          c(var_labels, "HF"), c(rep("variance", 4), "free"), TRUE,
          "dense REML by optim: no package fits the Huynh-Feldt structure",
          starts = list(c(5, 5, 5, 5, 1), c(4, 3, 6, 4, 0.5)))

fit <- gls(ortho_formula, ortho, correlation = corARMA(form = ~ pos | Subject, p = 3),
           weights = varIdent(form = ~ 1 | pos), method = "REML", control = gls_control)
reference("orthodont_tph", ortho_model("TPH"), ortho, ortho_formula, "Sex", ortho_vfun(tph_matrix), ortho_groups,
          c(var_labels, "TPH(1)", "TPH(2)", "TPH(3)"), c(rep("variance", 4), rep("correlation", 3)), TRUE,
          "nlme gls, corARMA(p = 3) with varIdent by position: TPH(k) = acf(k)",
          theta0 = c(position_variances(fit), arma_acf(fit)), m2ll_pkg = minus2ll(fit))

fit <- gls(ortho_formula, ortho, correlation = corARMA(form = ~ pos | Subject, p = 3),
           weights = varIdent(form = ~ 1 | pos), method = "ML", control = gls_control)
model <- ortho_model("TPH")
reference("orthodont_tph_ml", model, ortho, ortho_formula, "Sex", ortho_vfun(tph_matrix), ortho_groups,
          c(var_labels, "TPH(1)", "TPH(2)", "TPH(3)"), c(rep("variance", 4), rep("correlation", 3)), FALSE,
          "ML; nlme gls, corARMA(p = 3) with varIdent by position: TPH(k) = acf(k)",
          theta0 = c(position_variances(fit), arma_acf(fit)), m2ll_pkg = minus2ll(fit))

fit <- gls(ortho_formula, ortho, correlation = corSymm(form = ~ pos | Subject),
           weights = varIdent(form = ~ 1 | pos), method = "REML", control = gls_control)
R <- corMatrix(fit$modelStruct$corStruct)[[1]]
reference("orthodont_unr", ortho_model("UNR"), ortho, ortho_formula, "Sex", ortho_vfun(unr_matrix), ortho_groups,
          c(var_labels, "Corr(2,1)", "Corr(3,1)", "Corr(3,2)", "Corr(4,1)", "Corr(4,2)", "Corr(4,3)"),
          c(rep("variance", 4), rep("correlation", 6)), TRUE,
          "nlme gls, corSymm with varIdent by position",
          theta0 = c(position_variances(fit), R[2, 1], R[3, 1], R[3, 2], R[4, 1], R[4, 2], R[4, 3]),
          m2ll_pkg = minus2ll(fit))

# ---------------------------------------------------------------------------
# Spatial structures.

dist_by_group <- function(coords, groups) lapply(groups, function(g) as.matrix(dist(coords[g, , drop = FALSE])))

# BodyWeight: weight ~ Time + Diet with SP(EXP) and SP(POW) over the days of
# measurement (1, 8, ..., 43, 44, ..., 64) by Rat.
bw_file <- "examples/data/bodyweight.csv"
bw <- code_factors(read.csv(bw_file, stringsAsFactors = FALSE), c("Diet", "Rat"))
bw_groups <- groups_by(bw$Rat)
bw_D <- dist_by_group(cbind(bw$Time), bw_groups)
bw_formula <- weight ~ Time + Diet
bw_model <- function(structure) list(
  data = bw_file, structure = structure, side = "residual", response = "weight", factors = c("Diet", "Rat"),
  fixed = c("Intercept", "Time", "Diet"), residual = list(subject = "Rat", coordinates = "Time"))
sp_vfun <- function(type, D) {
  force(D)
  function(th, g) sp_matrix(type, th[1], th[2], D[[paste(g, collapse = ",")]])
}
keyed <- function(D, groups) setNames(D, vapply(groups, function(g) paste(g, collapse = ","), ""))
# Ranges on a fine logarithmic grid.
range_grid <- function(lo, hi) exp(seq(log(lo), log(hi), length.out = 400))
bw_Dk <- keyed(bw_D, bw_groups)

# The likelihood in the range has more than one local minimum: the best of
# several starts.
best_gls <- function(make) {
  best <- NULL
  for (v in c(2, 5, 10, 20, 50, 100, 300)) {
    f <- tryCatch(make(v), error = function(e) NULL)
    if (!is.null(f) && (is.null(best) || logLik(f) > logLik(best))) best <- f
  }
  best
}
fit <- best_gls(function(v) gls(bw_formula, bw, correlation = corExp(value = v, form = ~ Time | Rat),
                                 method = "REML", control = gls_control))
range_exp <- cor_params(fit)
reference("bodyweight_sp_exp", bw_model("SP_EXP"), bw, bw_formula, "Diet", sp_vfun("EXP", bw_Dk), bw_groups,
          c("SP(EXP)", "Residual"), c("range", "variance"), TRUE, "nlme gls, corExp over Time by Rat",
          theta0 = c(range_exp, sigma(fit)^2), m2ll_pkg = minus2ll(fit),
          profile = range_grid(0.5, 5000))
reference("bodyweight_sp_pow", bw_model("SP_POW"), bw, bw_formula, "Diet", sp_vfun("POW", bw_Dk), bw_groups,
          c("SP(POW)", "Residual"), c("unit", "variance"), TRUE,
          "nlme gls, corExp over Time by Rat, reparameterised: rho = exp(-1 / range)",
          theta0 = c(exp(-1 / range_exp), sigma(fit)^2), m2ll_pkg = minus2ll(fit),
          profile = exp(-1 / range_grid(0.5, 5000)))

# Simulated data with one coordinate: 40 subjects, 6 times each drawn on a
# grid of 0.1 over [0, 20], a covariate x and a two-level group; errors with
# an exponential covariance (sigma^2 = 4, range 3) plus a little white noise.
set.seed(20240611)
sim1 <- do.call(rbind, lapply(1:40, function(s) {
  time <- sort(sample(seq(0, 20, by = 0.1), 6))
  D <- as.matrix(dist(time))
  e <- drop(t(chol(4 * exp(-D / 3) + diag(0.2, 6))) %*% rnorm(6))
  x <- round(rnorm(6), 3)
  group <- if (s %% 2 == 0) "a" else "b"
  data.frame(subject = sprintf("S%02d", s), time = time, x = x, group = group,
             y = round(10 + 0.5 * x + (group == "a") * 1.5 + e, 4))
}))
# A second response for SP(LIN), drawn from that structure itself with a
# range (30) beyond every distance within a subject: the estimate then lies
# where no correlation is cut off at 0, away from the kinks of the likelihood.
set.seed(77)
sim1$ylin <- NA
for (s in unique(sim1$subject)) {
  rows <- which(sim1$subject == s)
  S <- sp_matrix("LIN", 1 / 30, 4, as.matrix(dist(sim1$time[rows])))
  sim1$ylin[rows] <- round(10 + 0.5 * sim1$x[rows] + (sim1$group[rows] == "a") * 1.5 + drop(t(chol(S)) %*% rnorm(6)), 4)
}
sim1_file <- "spatial1d.csv"
write.csv(sim1, file.path(out_dir, sim1_file), row.names = FALSE)
sim1 <- read_data(sim1_file, c("group", "subject"), dir = out_dir)
sim1_groups <- groups_by(sim1$subject)
sim1_Dk <- keyed(dist_by_group(cbind(sim1$time), sim1_groups), sim1_groups)
sim1_formula <- y ~ x + group
sim1_model <- function(structure) list(
  data = file.path("tests/data/numeric/reference/covariance", sim1_file), structure = structure, side = "residual",
  response = "y", factors = c("group", "subject"), fixed = c("Intercept", "x", "group"),
  residual = list(subject = "subject", coordinates = "time"))

fit <- best_gls(function(v) gls(sim1_formula, sim1, correlation = corGaus(value = v, form = ~ time | subject),
                                method = "REML", control = gls_control))
reference("spatial1d_sp_gau", sim1_model("SP_GAU"), sim1, sim1_formula, "group", sp_vfun("GAU", sim1_Dk),
          sim1_groups, c("SP(GAU)", "Residual"), c("range", "variance"), TRUE, "nlme gls, corGaus over time",
          theta0 = c(cor_params(fit), sigma(fit)^2),
          m2ll_pkg = minus2ll(fit), profile = range_grid(0.02, 50))

fit <- best_gls(function(v) gls(ylin ~ x + group, sim1, correlation = corLin(value = v, form = ~ time | subject),
                                method = "REML", control = gls_control))
model <- sim1_model("SP_LIN")
model$response <- "ylin"
reference("spatial1d_sp_lin", model, sim1, ylin ~ x + group, "group", sp_vfun("LIN", sim1_Dk),
          sim1_groups, c("SP(LIN)", "Residual"), c("range", "variance"), TRUE,
          "nlme gls, corLin over time: SP(LIN) = 1 / range",
          theta0 = c(1 / cor_params(fit), sigma(fit)^2),
          m2ll_pkg = minus2ll(fit), profile = 1 / range_grid(0.02, 1000))

fit <- best_gls(function(v) gls(sim1_formula, sim1, correlation = corSpher(value = v, form = ~ time | subject),
                                method = "REML", control = gls_control))
reference("spatial1d_sp_sph", sim1_model("SP_SPH"), sim1, sim1_formula, "group", sp_vfun("SPH", sim1_Dk),
          sim1_groups, c("SP(SPH)", "Residual"), c("range", "variance"), TRUE, "nlme gls, corSpher over time",
          theta0 = c(cor_params(fit), sigma(fit)^2),
          m2ll_pkg = minus2ll(fit), profile = range_grid(0.02, 50))

fit <- best_gls(function(v) gls(sim1_formula, sim1, correlation = corExp(value = v, form = ~ time | subject),
                                method = "ML", control = gls_control))
reference("spatial1d_sp_exp_ml", sim1_model("SP_EXP"), sim1, sim1_formula, "group", sp_vfun("EXP", sim1_Dk),
          sim1_groups, c("SP(EXP)", "Residual"), c("range", "variance"), FALSE, "ML; nlme gls, corExp over time",
          theta0 = c(cor_params(fit), sigma(fit)^2),
          m2ll_pkg = minus2ll(fit), profile = range_grid(0.02, 50))

# Simulated data with two coordinates: 30 fields of 9 plots each on a
# jittered 3 x 3 grid of spacing 4 (so that every distance exceeds 1);
# errors with an exponential covariance (sigma^2 = 3, range 5).
set.seed(8675309)
sim2 <- do.call(rbind, lapply(1:30, function(s) {
  east <- rep(0:2, 3) * 4 + round(runif(9, -1, 1), 2)
  north <- rep(0:2, each = 3) * 4 + round(runif(9, -1, 1), 2)
  D <- as.matrix(dist(cbind(east, north)))
  e <- drop(t(chol(3 * exp(-D / 5) + diag(0.1, 9))) %*% rnorm(9))
  treatment <- sample(c("A", "B", "C"), 9, replace = TRUE)
  data.frame(field = sprintf("F%02d", s), east = east, north = north, treatment = treatment,
             y = round(20 + c(A = 0, B = 1, C = -0.5)[treatment] + e, 4))
}))
# A second response for SP(LINL), drawn from that structure itself (rho
# 0.25, sigma^2 3): its estimate then lies where no correlation is cut off
# at 0, away from the points where the likelihood has a kink.
set.seed(4242)
sim2$z <- NA
for (f in unique(sim2$field)) {
  rows <- which(sim2$field == f)
  S <- sp_matrix("LINL", 0.25, 3, as.matrix(dist(cbind(sim2$east[rows], sim2$north[rows]))))
  sim2$z[rows] <- round(20 + c(A = 0, B = 1, C = -0.5)[sim2$treatment[rows]] + drop(t(chol(S)) %*% rnorm(9)), 4)
}
sim2_file <- "spatial2d.csv"
write.csv(sim2, file.path(out_dir, sim2_file), row.names = FALSE)
sim2 <- read_data(sim2_file, c("treatment", "field"), dir = out_dir)
sim2_groups <- groups_by(sim2$field)
sim2_Dk <- keyed(dist_by_group(cbind(sim2$east, sim2$north), sim2_groups), sim2_groups)
sim2_formula <- y ~ treatment
sim2_model <- function(structure) list(
  data = file.path("tests/data/numeric/reference/covariance", sim2_file), structure = structure, side = "residual",
  response = "y", factors = c("treatment", "field"), fixed = c("Intercept", "treatment"),
  residual = list(subject = "field", coordinates = c("east", "north")))

fit <- best_gls(function(v) gls(sim2_formula, sim2, correlation = corExp(value = v, form = ~ east + north | field),
                                method = "REML", control = gls_control))
reference("spatial2d_sp_exp", sim2_model("SP_EXP"), sim2, sim2_formula, "treatment", sp_vfun("EXP", sim2_Dk),
          sim2_groups, c("SP(EXP)", "Residual"), c("range", "variance"), TRUE,
          "nlme gls, corExp over the Euclidean distance of (east, north)",
          theta0 = c(cor_params(fit), sigma(fit)^2),
          m2ll_pkg = minus2ll(fit), profile = range_grid(0.1, 100))

fit <- best_gls(function(v) gls(sim2_formula, sim2, correlation = corGaus(value = v, form = ~ east + north | field),
                                method = "REML", control = gls_control))
reference("spatial2d_sp_gau", sim2_model("SP_GAU"), sim2, sim2_formula, "treatment", sp_vfun("GAU", sim2_Dk),
          sim2_groups, c("SP(GAU)", "Residual"), c("range", "variance"), TRUE,
          "nlme gls, corGaus over the Euclidean distance of (east, north)",
          theta0 = c(cor_params(fit), sigma(fit)^2),
          m2ll_pkg = minus2ll(fit), profile = range_grid(0.1, 100))

model <- sim2_model("SP_LINL")
model$response <- "z"
reference("spatial2d_sp_linl", model, sim2, z ~ treatment, "treatment", sp_vfun("LINL", sim2_Dk),
          sim2_groups, c("SP(LINL)", "Residual"), c("range", "variance"), TRUE,
          "dense REML by optim: no package fits the linear-log spatial structure",
          starts = list(c(0.2, 3), c(0.35, 2), c(0.1, 4)), profile = 1 / log(range_grid(1.5, 1e6)))

# ---------------------------------------------------------------------------
# Random-side structures: 80 subjects, 4 positions, 2 replicates per position;
# G over the 4 position columns of a subject plus a residual variance.

set.seed(1234567)
G_true <- matrix(c(2.0, 1.2, 0.9, 0.6,
                   1.2, 1.8, 1.1, 0.8,
                   0.9, 1.1, 1.6, 1.0,
                   0.6, 0.8, 1.0, 1.5), 4, 4)
sim3 <- do.call(rbind, lapply(1:80, function(s) {
  b <- drop(t(chol(G_true)) %*% rnorm(4))
  pos <- rep(1:4, each = 2)
  x <- round(rnorm(8), 3)
  data.frame(subject = sprintf("R%02d", s), pos = pos, x = x, y = round(5 + 0.7 * x + b[pos] + rnorm(8), 4))
}))
sim3_file <- "randomside.csv"
write.csv(sim3, file.path(out_dir, sim3_file), row.names = FALSE)
sim3 <- read_data(sim3_file, c("subject"), dir = out_dir)
sim3$posf <- factor(sim3$pos)
sim3_groups <- groups_by(sim3$subject)
sim3_formula <- y ~ x
sim3_model <- function(structure) list(
  data = file.path("tests/data/numeric/reference/covariance", sim3_file), structure = structure, side = "random",
  response = "y", factors = c("subject", "pos"), fixed = c("Intercept", "x"),
  random = list(effects = "pos", subject = "subject"))
# Parameters: the structure's over G, then the residual variance.
random_vfun <- function(mat, k) function(th, g) {
  Z <- outer(sim3$pos[g], 1:4, "==") * 1
  Z %*% mat(th[1:k], 4) %*% t(Z) + diag(th[k + 1], length(g))
}

fit <- glmmTMB(y ~ x + cs(0 + posf | subject), data = sim3, REML = TRUE, control = tmb_control)
vc <- VarCorr(fit)$cond$subject
reference("random_csh", sim3_model("CSH"), sim3, sim3_formula, character(0), random_vfun(csh_matrix, 5), sim3_groups,
          c(var_labels, "CSH rho", "Residual"), c(rep("variance", 4), "correlation", "variance"), TRUE,
          "glmmTMB, cs(0 + position | subject), heterogeneous compound symmetry",
          theta0 = c(diag(vc), attr(vc, "correlation")[2, 1], sigma(fit)^2), m2ll_pkg = minus2ll(fit),
          tol_check = 1e-7)

fit <- glmmTMB(y ~ x + toep(0 + posf | subject), data = sim3, REML = TRUE, control = tmb_control)
vc <- VarCorr(fit)$cond$subject
Rc <- attr(vc, "correlation")
reference("random_tph", sim3_model("TPH"), sim3, sim3_formula, character(0), random_vfun(tph_matrix, 7), sim3_groups,
          c(var_labels, "TPH(1)", "TPH(2)", "TPH(3)", "Residual"),
          c(rep("variance", 4), rep("correlation", 3), "variance"), TRUE,
          "glmmTMB, toep(0 + position | subject), heterogeneous Toeplitz",
          theta0 = c(diag(vc), Rc[1, 2:4], sigma(fit)^2), m2ll_pkg = minus2ll(fit), tol_check = 1e-7)

sim3$cell <- interaction(sim3$subject, sim3$pos)
fit <- glmmTMB(y ~ x + rr(0 + posf | subject, d = 1) + (1 | cell), data = sim3, REML = TRUE, control = tmb_control)
lambda <- fit$obj$env$parList()$theta[1:4]
d_cell <- VarCorr(fit)$cond$cell[1, 1]
fa_canon5 <- function(t) if (t[1] < 0) c(-t[1:4], t[-(1:4)]) else t
reference("random_fa1", sim3_model("FA1"), sim3, sim3_formula, character(0), random_vfun(fa1_matrix, 5), sim3_groups,
          c(sprintf("FA(%d,1)", 1:4), "FA diagonal", "Residual"), c(rep("free", 4), "variance", "variance"), TRUE,
          "glmmTMB, rr(0 + position | subject) plus a random intercept per subject and position: G = lambda lambda' + d I",
          theta0 = fa_canon5(c(lambda, d_cell, sigma(fit)^2)), m2ll_pkg = minus2ll(fit), tol_check = 1e-7,
          canon = fa_canon5)

fit <- lme(y ~ x, sim3, random = list(subject = pdSymm(~ 0 + posf)), method = "REML", control = lme_control)
G <- unclass(getVarCov(fit))
Rc <- cov2cor(G)
reference("random_unr", sim3_model("UNR"), sim3, sim3_formula, character(0), random_vfun(unr_matrix, 10),
          sim3_groups, c(var_labels, "Corr(2,1)", "Corr(3,1)", "Corr(3,2)", "Corr(4,1)", "Corr(4,2)", "Corr(4,3)",
          "Residual"), c(rep("variance", 4), rep("correlation", 6), "variance"), TRUE,
          "nlme lme with an unstructured G (pdSymm), reparameterised as variances and correlations",
          theta0 = c(diag(G), Rc[2, 1], Rc[3, 1], Rc[3, 2], Rc[4, 1], Rc[4, 2], Rc[4, 3], sigma(fit)^2),
          m2ll_pkg = minus2ll(fit))

fit <- lme(y ~ x, sim3, random = list(subject = pdCompSymm(~ 0 + posf)), method = "REML", control = lme_control)
G <- unclass(getVarCov(fit))
reference("random_csr", sim3_model("CSR"), sim3, sim3_formula, character(0), random_vfun(csr_matrix, 2),
          sim3_groups, c("CSR rho", "Variance", "Residual"), c("correlation", "variance", "variance"), TRUE,
          "nlme lme with pdCompSymm (equal variances, one correlation)",
          theta0 = c(G[2, 1] / G[1, 1], G[1, 1], sigma(fit)^2), m2ll_pkg = minus2ll(fit))

reference("random_arh1", sim3_model("ARH1"), sim3, sim3_formula, character(0), random_vfun(arh1_matrix, 5),
          sim3_groups, c(var_labels, "ARH1 rho", "Residual"), c(rep("variance", 4), "correlation", "variance"), TRUE,
          "dense REML by optim: no package version here has a heterogeneous AR(1) random term",
          starts = list(c(2, 2, 2, 2, 0.5, 1), c(1, 3, 1.5, 2, 0.8, 0.5)))
