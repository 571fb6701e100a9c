# Reference values of what a generalized fit reports beyond its estimates:
# marginal means on the data's scale and the classification table.
#
# Writes tests/data/numeric/reference/generalized_outputs.json with
#   cbpp_means: the marginal means of period of the cbpp fit
#     (cbind(incidence, size - incidence) ~ period + (1 | herd), logit,
#     residual pseudo-likelihood) on both scales, from emmeans on the fit's
#     fixed estimates and their covariance (emmeans::qdrg, type =
#     "response"), checked against the hand formulas plogis(eta) and
#     dlogis(eta) * SE(eta);
#   bacteria_classification: the binary bacteria fit (y ~ trt + wk2 +
#     (1 | ID), logit): observed by predicted counts, the prediction the
#     category whose conditional probability exceeds 1/2;
#   cbpp_classification: the cbpp fit's trials classified the same way, each
#     event and non-event of a record by its record's probability.
# The tests only read this file; R is needed only to regenerate it:
#
#   Rscript tests/numeric/reference/make_generalized_outputs_reference.R      (from the repository root)
#
# Checked with R 4.2, nlme 3.1-162, MASS 7.3-58, emmeans 1.8.4.

suppressPackageStartupMessages({
  library(nlme)
  library(MASS)
  library(jsonlite)
  library(emmeans)
})

args <- commandArgs(trailingOnly = TRUE)
out_dir <- if (length(args) >= 1) args[1] else "tests/data/numeric/reference"
glmm_dir <- if (length(args) >= 2) args[2] else "tests/data/numeric/glmm"
data_dir <- "examples/data"

script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
here <- if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference"
source(file.path(here, "reference_helpers.R"))
source(file.path(here, "pseudo_likelihood_helpers.R"))

# cbpp's marginal means of period, from the fit's fixed estimates and their
# covariance (the last period aliased, as in the engine's design).
cbpp <- read_data("cbpp.csv", c("herd", "period"), dir = data_dir)
cbpp$.y <- cbpp$incidence / cbpp$size
cbpp_fit <- pl_fit(~ period, "herd", cbpp, binomial(), cbpp$size)
grid <- qdrg(~ period, data = cbpp, coef = cbpp_fit$fit$b, vcov = cbpp_fit$fit$cov, df = Inf,
             contrasts = list(period = contrasts(cbpp$period)), link = "logit")
# The means of the periods by hand: the intercept is the last period's.
b <- cbpp_fit$fit$b
stopifnot(isTRUE(all.equal(summary(emmeans(grid, ~ period))$emmean, c(b[1] + b[2:4], b[1]), tolerance = 1e-12)))
link_scale <- summary(emmeans(grid, ~ period))
data_scale <- summary(emmeans(grid, ~ period), type = "response")
stopifnot(isTRUE(all.equal(data_scale$response, plogis(link_scale$emmean), tolerance = 1e-12)),
          isTRUE(all.equal(data_scale$SE, dlogis(link_scale$emmean) * link_scale$SE, tolerance = 1e-12)),
          isTRUE(all.equal(data_scale$asymp.LCL, plogis(link_scale$asymp.LCL), tolerance = 1e-12)))
cbpp_means <- list(period = as.character(link_scale$period), eta = link_scale$emmean, eta_se = link_scale$SE,
                   mean = data_scale$response, mean_se = data_scale$SE)

# Observed by predicted, rows the observed category (0 then 1), columns
# the predicted one; w the records' trials, y their proportions.
classify <- function(y, w, mu) {
  predicted <- as.numeric(mu > 0.5)
  events <- w * y
  counts <- matrix(0, 2, 2)
  counts[1, 1] <- sum((w - events)[predicted == 0])
  counts[1, 2] <- sum((w - events)[predicted == 1])
  counts[2, 1] <- sum(events[predicted == 0])
  counts[2, 2] <- sum(events[predicted == 1])
  as.numeric(t(counts))
}

bac <- read_data("bacteria.csv", c("ID", "trt"), dir = glmm_dir)
bac$.y <- bac$y
bac_fit <- pl_fit(~ trt + wk2, "ID", bac, binomial(), rep(1, nrow(bac)))
out <- list(
  cbpp_means = cbpp_means,
  bacteria_classification = classify(bac$y, rep(1, nrow(bac)), bac_fit$mu),
  cbpp_classification = classify(cbpp$.y, cbpp$size, cbpp_fit$mu))
write_json(out, file.path(out_dir, "generalized_outputs.json"), digits = NA, auto_unbox = TRUE, pretty = TRUE)
