# The pseudo-likelihood loop of the generalized reference scripts: the
# working model's (restricted) likelihood written out over dense matrices,
# the negative binomial's shape, and the loop itself. Sourced from the
# scripts' folder; they load nlme and MASS themselves.

control <- lmeControl(maxIter = 500, msMaxIter = 500, niterEM = 100, tolerance = 1e-12, msTol = 1e-14,
                      returnObject = TRUE)

# The working model y = X b + Z u + e with one random intercept per level of
# `group` (variance s2) and Var(e) = diag(1 / wt) (the residual variance
# fixed at 1), fitted by its (restricted) likelihood written out over dense
# matrices: nlme's lme with lmeControl(sigma = 1) agrees with it for ML, but
# its restricted criterion with a fixed sigma is not the usual one, so the
# REML fits are made here. Returns b, its covariance, s2 and the
# conditional linear predictor X b + Z u.
working_fit <- function(X, Z, z, wt, reml) {
  criterion <- function(s2) {
    V <- s2 * tcrossprod(Z) + diag(1 / wt)
    Vi <- solve(V)
    XVX <- crossprod(X, Vi %*% X)
    b <- solve(XVX, crossprod(X, Vi %*% z))
    r <- z - X %*% b
    list(value = as.numeric(determinant(V)$modulus + (if (reml) determinant(XVX)$modulus else 0) +
                            crossprod(r, Vi %*% r)),
         b = as.numeric(b), cov = solve(XVX), eta = as.numeric(X %*% b + s2 * Z %*% crossprod(Z, Vi %*% r)))
  }
  s2 <- optimize(function(s) criterion(s)$value, c(0, 20), tol = 1e-13)$minimum
  c(criterion(s2), list(s2 = s2))
}

# The negative binomial's shape at the current means by maximum likelihood
# (MASS::theta.ml), within the engine's interval [1e-4, 1e8].
nb_shape <- function(y, mu) {
  k <- tryCatch(suppressWarnings(theta.ml(y, mu, limit = 200, eps = 1e-13)), error = function(e) Inf)
  if (!is.finite(k)) 1e8 else min(max(k, 1e-4), 1e8)
}

# The loop. y is the proportion for a binomial target, w its trials. With
# nb, the family is the negative binomial whose shape is estimated before
# each linearisation.
pl_fit <- function(fixed, group, d, family, w, reml = TRUE, tol = 1e-9, max_iter = 300, nb = FALSE) {
  X <- model.matrix(fixed, d)
  Z <- model.matrix(as.formula(paste("~", group, "- 1")), d)
  y <- d$.y
  mu <- if (family$family == "binomial") (w * y + 0.5) / (w + 1) else y + 0.1
  eta <- family$linkfun(mu)
  prev <- NULL
  shape <- NA
  for (it in seq_len(max_iter)) {
    if (nb) {
      shape <- nb_shape(y, mu)
      family <- negative.binomial(shape)
    }
    dmu <- family$mu.eta(eta)
    z <- eta + (y - mu) / dmu
    wt <- w * dmu^2 / family$variance(mu)
    fit <- working_fit(X, Z, z, wt, reml)
    params <- c(fit$b, fit$s2, if (nb) shape)
    eta <- fit$eta
    mu <- family$linkinv(eta)
    if (!is.null(prev) && max(abs(params - prev) / pmax(abs(prev), 1)) <= tol) break
    prev <- params
  }
  list(fit = fit, X = X, fixed = fixed, iterations = it, eta = eta, mu = mu, shape = shape, family = family)
}
