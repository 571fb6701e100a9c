# Reference values of the links and distributions of generalized models.
#
# Writes tests/data/numeric/reference/family.json: for each link, at a few
# means, eta = g(mu), and at a few eta, mu = g^-1(eta) and d mu / d eta
# (stats::make.link, and the complementary links by their formulas); for each
# distribution, at a few (y, mu, w, scale), the variance function, the
# deviance (the family's dev.resids) and the log likelihood (the d* density
# functions). The tests only read the file; R is needed only to regenerate it:
#
#   Rscript tests/numeric/reference/make_family_reference.R      (from the repository root)
#
# Checked with R 4.2, MASS 7.3.

suppressPackageStartupMessages({
  library(jsonlite)
  library(MASS)
})

out_dir <- if (length(commandArgs(trailingOnly = TRUE)) >= 1) commandArgs(trailingOnly = TRUE)[1] else
  "tests/data/numeric/reference"

mus <- c(0.02, 0.3, 0.5, 0.77, 0.995)
etas <- c(-3.2, -0.4, 0, 0.9, 2.5)
pos_etas <- c(0.3, 1, 2.2)

link_row <- function(name, lk, mu_values, eta_values, power = NA) {
  list(link = name, power = power, mu = mu_values, eta = lk$linkfun(mu_values),
       eta_in = eta_values, mu_out = lk$linkinv(eta_values), dmu_deta = lk$mu.eta(eta_values))
}
# The complementary links: negative log-log, and the log of the complement.
nloglog <- list(linkfun = function(mu) -log(-log(mu)), linkinv = function(eta) exp(-exp(-eta)),
                mu.eta = function(eta) exp(-eta - exp(-eta)))
logc <- list(linkfun = function(mu) log(1 - mu), linkinv = function(eta) 1 - exp(eta),
             mu.eta = function(eta) -exp(eta))
links <- list(
  link_row("IDENTITY", make.link("identity"), mus, etas),
  link_row("LOG", make.link("log"), mus * 10, etas),
  link_row("LOGIT", make.link("logit"), mus, etas),
  link_row("PROBIT", make.link("probit"), mus, etas),
  link_row("CLOGLOG", make.link("cloglog"), mus, etas),
  link_row("CAUCHIT", make.link("cauchit"), mus, etas),
  link_row("NLOGLOG", nloglog, mus, etas),
  link_row("LOGC", logc, mus, -c(3.2, 1.5, 0.4, 0.1, 0.01)),
  link_row("POWER", make.link("1/mu^2"), mus * 4, pos_etas, power = -2),
  link_row("POWER", make.link("sqrt"), mus * 4, pos_etas, power = 0.5))

# Gamma and inverse Gaussian log likelihoods with dispersion phi and prior
# weight w: the shape of the gamma is w / phi; the inverse Gaussian's
# density is written out (no package needed).
dinvgauss_log <- function(y, mu, phi) -0.5 * (log(2 * pi * phi * y^3) + (y - mu)^2 / (phi * mu^2 * y))
k <- 2.7
cases <- list(
  list(dist = "BINOMIAL", y = c(0, 0.25, 1, 3 / 7), mu = c(0.2, 0.4, 0.9, 0.5), w = c(1, 8, 1, 7), scale = 1,
       fam = binomial(), ll = function(y, mu, w, s) dbinom(round(w * y), w, mu, log = TRUE)),
  list(dist = "POISSON", y = c(0, 1, 4, 13), mu = c(0.5, 2, 3.1, 10), w = c(1, 1, 1, 1), scale = 1,
       fam = poisson(), ll = function(y, mu, w, s) dpois(y, mu, log = TRUE)),
  list(dist = "NEGBIN", y = c(0, 1, 4, 13), mu = c(0.5, 2, 3.1, 10), w = c(1, 1, 1, 1), scale = 1, shape = k,
       fam = negative.binomial(k), ll = function(y, mu, w, s) dnbinom(y, size = k, mu = mu, log = TRUE)),
  list(dist = "GAMMA", y = c(0.4, 1, 2.5, 7), mu = c(1, 1.5, 2, 6), w = c(1, 1, 2, 1), scale = 0.6,
       fam = Gamma(), ll = function(y, mu, w, s) dgamma(y, shape = w / s, rate = w / (s * mu), log = TRUE)),
  list(dist = "IGAUSS", y = c(0.4, 1, 2.5, 7), mu = c(1, 1.5, 2, 6), w = c(1, 1, 1, 1), scale = 0.6,
       fam = inverse.gaussian(), ll = function(y, mu, w, s) dinvgauss_log(y, mu, s)),
  list(dist = "NORMAL", y = c(-1, 0.3, 2), mu = c(0, 1, 2.5), w = c(1, 2, 1), scale = 1.7,
       fam = gaussian(), ll = function(y, mu, w, s) dnorm(y, mu, sqrt(s / w), log = TRUE)))
families <- lapply(cases, function(c) {
  list(dist = c$dist, shape = if (is.null(c$shape)) NA else c$shape, y = c$y, mu = c$mu, w = c$w,
       scale = c$scale, variance = c$fam$variance(c$mu), deviance = c$fam$dev.resids(c$y, c$mu, c$w),
       loglik = c$ll(c$y, c$mu, c$w, c$scale))
})

write_json(list(links = links, families = families), file.path(out_dir, "family.json"), digits = NA,
           auto_unbox = TRUE, pretty = TRUE, na = "null")
