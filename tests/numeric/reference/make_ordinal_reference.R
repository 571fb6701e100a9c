# Reference values of cumulative link mixed models for an ordinal target.
#
# Writes examples/data/wine.csv (the wine tasting data of the ordinal
# package: bitterness ratings 1 to 5 of wines at two temperatures, with and
# without skin contact, by nine judges; Randall, J. H. (1989), The analysis
# of sensory data by generalised linear model, Biometrical Journal 31,
# 781-793) and tests/data/numeric/reference/ordinal.json: the fits of
#   rating ~ temp + contact + (1 | judge)
# by ordinal::clmm with the logit link by the Laplace approximation and by
# adaptive Gauss-Hermite quadrature with 10 points, and with the probit link
# by the Laplace approximation, and the model without the judges by
# ordinal::clm. Thresholds, coefficients, their standard
# errors, the random intercept's variance, the log likelihood and each
# judge's conditional mode. clmm's default settings: its Hessian (and so the
# standard errors) agrees to 1e-4 with a central-difference Hessian of the
# Laplace likelihood written out independently, and tighter gradient
# tolerances were seen to make it worse. The factors have their last level (warm, yes) as
# the reference, the level the engine's overparameterized design aliases;
# clmm's predictor is theta_j - x'beta - u, the engine's convention too.
# The tests only read the files; R is needed only to regenerate them:
#
#   Rscript tests/numeric/reference/make_ordinal_reference.R      (from the repository root)
#
# Checked with R 4.2, ordinal 2022.11, emmeans 1.8.4.

suppressPackageStartupMessages({
  library(jsonlite)
  library(ordinal)
  library(emmeans)
})

out_dir <- if (length(commandArgs(trailingOnly = TRUE)) >= 1) commandArgs(trailingOnly = TRUE)[1] else
  "tests/data/numeric/reference"

data(wine, package = "ordinal")
csv <- data.frame(judge = as.integer(as.character(wine$judge)), bottle = as.integer(as.character(wine$bottle)),
                  temp = as.character(wine$temp), contact = as.character(wine$contact),
                  rating = as.integer(as.character(wine$rating)), response = wine$response)
write.csv(csv, "examples/data/wine.csv", row.names = FALSE)

d <- read.csv("examples/data/wine.csv")
d$rating <- factor(d$rating, ordered = TRUE)
d$judge <- factor(d$judge)
d$temp <- relevel(factor(d$temp), "warm")
d$contact <- relevel(factor(d$contact), "yes")

# Each record's category of the highest probability given its judge's
# conditional mode: P(Y = j) = F(theta_j - eta) - F(theta_(j-1) - eta).
predicted_category <- function(alpha, eta, cdf) {
  cum <- sapply(c(alpha, Inf), function(a) cdf(a - eta))
  p <- cum - cbind(0, cum[, -ncol(cum), drop = FALSE])
  as.integer(levels(d$rating))[max.col(p, ties.method = "first")]
}

# Marginal means on the latent scale, emmeans' mode = "latent": x'beta less
# the thresholds' mean, standard errors from the covariance of thresholds
# and beta (emmeans gives them df = Inf), and the pairwise differences.
latent_means <- function(m, terms) {
  e <- emmeans(m, terms, mode = "latent")
  s <- as.data.frame(summary(e))
  p <- as.data.frame(summary(pairs(e)))
  list(levels = lapply(s[, all.vars(terms), drop = FALSE], as.character), emmean = s$emmean, se = s$SE,
       pairs = I(as.character(p$contrast)), pairs_estimate = I(p$estimate), pairs_se = I(p$SE))
}

fit <- function(link, nAGQ) {
  m <- clmm(rating ~ temp + contact + (1 | judge), data = d, link = link, nAGQ = nAGQ)
  cdf <- if (link == "logit") plogis else pnorm
  # eta = x'beta + u of each record, the judge's conditional mode as u.
  eta <- drop(cbind(d$temp == "cold", d$contact == "no") %*% m$beta) + ranef(m)$judge[as.integer(d$judge), 1]
  se <- sqrt(diag(vcov(m)))
  nt <- length(m$alpha)
  nb <- length(m$beta)
  sd <- as.numeric(attr(VarCorr(m)$judge, "stddev"))
  list(link = toupper(link), nAGQ = nAGQ,
       thresholds = unname(m$alpha), threshold_se = unname(se[seq_len(nt)]),
       beta_names = names(m$beta), beta = unname(m$beta), beta_se = unname(se[nt + seq_len(nb)]),
       # vcov's last entry is that of log sigma (clmm's parameter); the
       # variance's follows by the delta method, d sigma^2 / d log sigma = 2 sigma^2.
       variance = sd^2, variance_se = unname(2 * sd^2 * se[nt + nb + 1]),
       loglik = as.numeric(logLik(m)), modes = unname(ranef(m)$judge[, 1]),
       max_gradient = max(abs(m$gradient)),
       linear_predictor = eta, predicted_category = predicted_category(m$alpha, eta, cdf),
       latent_temp = latent_means(m, ~ temp), latent_temp_contact = latent_means(m, ~ temp:contact))
}
fits <- list(fit("logit", 1), fit("logit", 10), fit("probit", 1))

# The Laplace likelihood written out (each judge's mode by a line search,
# the curvature there by its analytic second derivative), and the standard
# error of the variance from its Hessian by numDeriv at clmm's estimates:
# clmm's own value for log sigma is accurate to about 2e-4 only.
laplace_loglik <- function(par, cdf, dens, ddens) {
  th <- c(-Inf, par[1:4], Inf)
  eta <- drop(cbind(d$temp == "cold", d$contact == "no") %*% par[5:6])
  s <- exp(par[7])
  y <- as.integer(d$rating)
  ll <- 0
  for (g in split(seq_len(nrow(d)), d$judge)) {
    at <- function(b) list(a = th[y[g] + 1] - eta[g] - s * b, c = th[y[g]] - eta[g] - s * b)
    h <- function(b) with(at(b), sum(log(cdf(a) - cdf(c))) - b^2 / 2)
    h2 <- function(b) with(at(b), {
      p <- cdf(a) - cdf(c); dp <- -(dens(a) - dens(c)); ddp <- ddens(a) - ddens(c)
      sum(s^2 * (ddp / p - (dp / p)^2)) - 1
    })
    b <- optimize(h, c(-10, 10), maximum = TRUE, tol = 1e-12)$maximum
    ll <- ll + h(b) - 0.5 * log(-h2(b))
  }
  ll
}
finite <- function(f) function(x) ifelse(is.infinite(x), 0, f(x))
m <- clmm(rating ~ temp + contact + (1 | judge), data = d)
par <- c(m$alpha, m$beta, log(attr(VarCorr(m)$judge, "stddev")))
H <- numDeriv::hessian(function(p) laplace_loglik(p, plogis, finite(dlogis),
                                                  finite(function(x) dlogis(x) * (1 - 2 * plogis(x)))), par)
fits[[1]]$variance_se_independent <- 2 * exp(2 * par[7]) * sqrt(solve(-H)[7, 7])

# Without the judges: the cumulative link model of the fixed effects alone.
f <- clm(rating ~ temp + contact, data = d)
se <- sqrt(diag(vcov(f)))
fixed <- list(thresholds = unname(f$alpha), threshold_se = unname(se[1:4]), beta = unname(f$beta),
              beta_se = unname(se[5:6]), loglik = as.numeric(logLik(f)))

dir.create(out_dir, showWarnings = FALSE, recursive = TRUE)
writeLines(toJSON(list(data = "examples/data/wine.csv", fits = fits, fixed = fixed), digits = NA, auto_unbox = TRUE, pretty = TRUE),
           file.path(out_dir, "ordinal.json"))
