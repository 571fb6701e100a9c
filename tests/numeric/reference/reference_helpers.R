# Helpers shared by the scripts that write the engine's reference values.
# Each script sources this file from its own folder; the scripts run from
# the repository root and load the packages they need themselves.

# ---------------------------------------------------------------------------
# Optimiser settings: tight tolerances, so that the fits are accurate to far
# below the tests' tolerances.

lmer_control <- lme4::lmerControl(
  optimizer = "nloptwrap",
  optCtrl = list(algorithm = "NLOPT_LN_BOBYQA", xtol_abs = 1e-14, ftol_abs = 1e-16,
                 xtol_rel = 1e-14, ftol_rel = 1e-16, maxeval = 100000),
  check.conv.grad = lme4::.makeCC("ignore", tol = 1e-3))

gls_control <- nlme::glsControl(maxIter = 500, msMaxIter = 500, tolerance = 1e-12, msTol = 1e-14,
                                returnObject = TRUE)
lme_control <- nlme::lmeControl(maxIter = 500, msMaxIter = 500, niterEM = 100, tolerance = 1e-12,
                                msTol = 1e-14, returnObject = TRUE)

# Small relative steps for numerical derivatives: correlations near 1 must
# stay admissible.
deriv_args <- list(eps = 1e-6, d = 1e-4, zero.tol = sqrt(.Machine$double.eps / 7e-7), r = 4, v = 2)

# ---------------------------------------------------------------------------
# Data and the fixed design.

# Factor levels sorted ascending (numerically for numeric columns, byte-wise
# for text); with `last_reference`, treatment contrasts with the last level
# as the reference, the level the engine's overparameterized design aliases.
code_factors <- function(d, factors, last_reference = TRUE) {
  for (v in factors) {
    x <- d[[v]]
    lev <- if (is.numeric(x)) as.character(sort(unique(x))) else sort(unique(x), method = "radix")
    f <- factor(as.character(x), levels = lev)
    if (last_reference) contrasts(f) <- contr.treatment(levels(f), base = nlevels(f))
    d[[v]] <- f
  }
  d
}

# A data file of the folder `dir` (the script's data folder by default).
read_data <- function(file, factors, last_reference = TRUE, dir = data_dir) {
  code_factors(read.csv(file.path(dir, file), stringsAsFactors = FALSE), factors, last_reference)
}

# The engine's name of a column of R's fixed design.
canonical_name <- function(colname, term_label, factors) {
  if (colname == "(Intercept)") return("Intercept")
  vars <- strsplit(term_label, ":", fixed = TRUE)[[1]]
  parts <- strsplit(colname, ":", fixed = TRUE)[[1]]
  stopifnot(length(vars) == length(parts))
  out <- character(length(vars))
  for (i in seq_along(vars)) {
    v <- vars[i]
    if (v %in% factors) {
      stopifnot(startsWith(parts[i], v))
      out[i] <- paste0(v, "=", substring(parts[i], nchar(v) + 1))
    } else {
      out[i] <- v
    }
  }
  paste(out, collapse = "*")
}

# R's fixed design of a one-sided formula, with the engine's column names as
# the attribute "names_ours".
fixed_design <- function(formula, data, factors) {
  tt <- terms(formula)
  X <- model.matrix(tt, data)
  assign <- attr(X, "assign")
  labels <- c("(Intercept)", attr(tt, "term.labels"))
  attr(X, "names_ours") <- vapply(seq_len(ncol(X)), function(j) {
    canonical_name(colnames(X)[j], labels[assign[j] + 1], factors)
  }, "")
  X
}

# The records of each subject, in data order.
groups_by <- function(subject) split(seq_along(subject), subject)

# ---------------------------------------------------------------------------
# Fits.

# Newton steps with numerical derivatives while they decrease f.
newton_polish <- function(f, x, steps = 4) {
  fx <- f(x)
  for (i in seq_len(steps)) {
    g <- numDeriv::grad(f, x, method.args = deriv_args)
    H <- numDeriv::hessian(f, x, method.args = deriv_args)
    step <- tryCatch(solve(H, g), error = function(e) NULL)
    if (is.null(step)) break
    xn <- x - step
    fn <- tryCatch(f(xn), error = function(e) Inf)
    if (!is.finite(fn) || fn > fx) break
    x <- xn
    fx <- fn
  }
  x
}

# An lmer fit with tight tolerances, followed by a few Newton steps on lme4's
# own deviance function, which remove what is left of the optimiser's
# stopping error; the model is then rebuilt at that point.
fit_lmer <- function(formula, data, reml = TRUE) {
  m0 <- lme4::lmer(formula, data = data, REML = reml, control = lmer_control)
  dev <- lme4::lmer(formula, data = data, REML = reml, devFunOnly = TRUE)
  th <- newton_polish(dev, lme4::getME(m0, "theta"))
  m <- lme4::lmer(formula, data = data, REML = reml, start = list(theta = th),
                  control = lme4::lmerControl(optimizer = NULL))
  lmerTest::as_lmerModLmerTest(m)
}

# -2 log L of a package fit.
minus2ll <- function(fit) -2 * as.numeric(logLik(fit))

# The correlation parameters of an nlme fit on their natural scale.
cor_params <- function(fit) coef(fit$modelStruct$corStruct, unconstrained = FALSE)

# ---------------------------------------------------------------------------
# The dense criterion: -2 log L (REML or ML) with V block diagonal over the
# groups (lists of record indices); f is Inf where V is not positive
# definite.

dense_criterion <- function(theta, vfun, X, y, groups, reml) {
  p <- ncol(X)
  XVX <- matrix(0, p, p)
  XVy <- numeric(p)
  yVy <- 0
  logdet <- 0
  for (g in seq_along(groups)) {
    V <- vfun(theta, groups[[g]])
    R <- tryCatch(chol(V), error = function(e) NULL)
    if (is.null(R) || any(!is.finite(V))) return(list(f = Inf))
    rows <- groups[[g]]
    logdet <- logdet + 2 * sum(log(diag(R)))
    Xs <- backsolve(R, X[rows, , drop = FALSE], transpose = TRUE)
    ys <- backsolve(R, y[rows], transpose = TRUE)
    XVX <- XVX + crossprod(Xs)
    XVy <- XVy + drop(crossprod(Xs, ys))
    yVy <- yVy + sum(ys^2)
  }
  C <- solve(XVX)
  beta <- drop(C %*% XVy)
  rVr <- yVy - sum(XVy * beta)
  n <- length(y)
  f <- if (reml) {
    logdet + as.numeric(determinant(XVX, logarithm = TRUE)$modulus) + rVr + (n - p) * log(2 * pi)
  } else {
    logdet + rVr + n * log(2 * pi)
  }
  list(f = f, C = C, beta = beta, rVr = rVr)
}

# ---------------------------------------------------------------------------
# Output.

# Entries of "covparams": label and estimate, and the standard error when
# given.
vc_list <- function(labels, values, se = NULL) {
  lapply(seq_along(labels), function(i) {
    entry <- list(label = labels[i], estimate = values[i])
    if (!is.null(se)) entry$se <- se[i]
    entry
  })
}

# Writes a fixture as <name>.json into the folder `dir` (the script's output
# folder by default), every digit kept.
write_reference_json <- function(fixture, name, dir = out_dir, ...) {
  jsonlite::write_json(fixture, file.path(dir, paste0(name, ".json")), digits = NA, auto_unbox = TRUE,
                       pretty = TRUE, ...)
}
