# Reference values for custom hypothesis tests (/CONTRAST).
#
# Fits the models of the examples that ask for custom tests with lme4 +
# lmerTest and computes each test's rows (contest1D: estimate, standard
# error, Satterthwaite df, t against the row's K value, two-sided p value,
# confidence bounds) and its joint F test (contest with joint = TRUE: F,
# numerator and Satterthwaite denominator df, p value), then writes one JSON
# file per model into tests/data/numeric/reference/custom_tests/. The tests
# only read these files; R is needed only to regenerate them:
#
#   Rscript tests/numeric/reference/make_custom_test_reference.R   (from the repository root)
#
# Checked with R 4.2, lme4 1.1-31, lmerTest 3.1-3, numDeriv.
#
# Conventions:
#
# * A test's rows are written over the engine's overparameterized columns,
#   named as the engine names them ("Intercept", "Sex=Female*age", ...). The
#   factors use treatment contrasts with the last level as the reference,
#   so R's coefficients are the engine's non-aliased columns and an
#   estimable row over the engine's columns is the same row over R's with
#   the aliased columns left out.
# * A row that reaches the random effects (sleepstudy) is a prediction
#   x'b + z'u for one subject. lmerTest has no such test, so the estimate is
#   lme4's predict() for that subject and its standard error is that of the
#   prediction error from the inverse of the mixed-model equations,
#   computed here densely: var = [x z] C [x z]', C the inverse of
#   [X'X X'Z; Z'X Z'Z + sigma^2 G^-1] times sigma^2.

suppressPackageStartupMessages({
  library(lme4)
  library(lmerTest)
  library(jsonlite)
  library(numDeriv)
})

args <- commandArgs(trailingOnly = TRUE)
data_dir <- if (length(args) >= 1) args[1] else "examples/data"
out_dir <- if (length(args) >= 2) args[2] else "tests/data/numeric/reference/custom_tests"
dir.create(out_dir, showWarnings = FALSE, recursive = TRUE)

script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

# A row over the engine's columns (a named vector) as a row over R's
# coefficients; the engine's aliased columns must have coefficient 0 or the
# row must be estimable without them (which the caller ensures).
r_row <- function(fit, X, engine_row) {
  ours <- attr(X, "names_ours")
  L <- setNames(numeric(length(ours)), colnames(X))
  for (name in names(engine_row)) {
    j <- match(name, ours)
    if (!is.na(j)) L[j] <- engine_row[[name]]
  }
  L
}

custom_test <- function(fit, X, label, rows, K = rep(0, length(rows)), level = 0.95) {
  L <- do.call(rbind, lapply(rows, function(r) r_row(fit, X, r)))
  out_rows <- lapply(seq_along(rows), function(i) {
    one <- lmerTest::contest1D(fit, L[i, ], rhs = K[i], confint = TRUE, level = level)
    list(estimate = one$Estimate, se = one$`Std. Error`, df = one$df, t = one$`t value`,
         p = one$`Pr(>|t|)`, lower = one$lower, upper = one$upper, K = K[i])
  })
  joint <- lmerTest::contest(fit, L, rhs = K, joint = TRUE)
  list(label = label, rows = out_rows,
       joint = list(F = joint$`F value`, numDF = joint$NumDF, denDF = joint$DenDF, p = joint$`Pr(>F)`))
}

# orthodont: growth lines by sex with a random intercept and slope per child.
ortho <- read_data("orthodont.csv", c("Sex"))
f_ortho <- fit_lmer(distance ~ Sex * age + (age | Subject), ortho)
X_ortho <- fixed_design(~ Sex * age, ortho, c("Sex"))
write_reference_json(list(
  model = "distance ~ Sex * age + (age | Subject), REML",
  tests = list(
    custom_test(f_ortho, X_ortho, "Difference of the slopes", list(c("Sex=Female*age" = 1, "Sex=Male*age" = -1)))
  )), "orthodont")

# oats: varieties, amounts of nitrogen (a factor) and their interaction,
# random blocks and whole plots. The interaction's columns run with the
# variety slowest: Golden Rain, Marvellous, Victory, each over 0, 0.2, 0.4,
# 0.6.
oats <- read_data("oats.csv", c("Variety", "nitro"))
f_oats <- fit_lmer(yield ~ Variety * nitro + (1 | Block) + (1 | Block:Variety), oats)
X_oats <- fixed_design(~ Variety * nitro, oats, c("Variety", "nitro"))
nitro_levels <- c("0", "0.2", "0.4", "0.6")
varieties <- c("Golden Rain", "Marvellous", "Victory")
cells <- function(variety, values) {
  setNames(values, paste0("Variety=", variety, "*nitro=", nitro_levels))
}
main <- function(values) setNames(values, paste0("nitro=", nitro_levels))
linear <- c(-3, -1, 1, 3)
quadratic <- c(1, -1, -1, 1)
write_reference_json(list(
  model = "yield ~ Variety * nitro + (1 | Block) + (1 | Block:Variety), REML",
  tests = list(
    # 3 times the linear trend averaged over the varieties.
    custom_test(f_oats, X_oats, "Linear trend of nitrogen",
                list(c(main(3 * linear), cells(varieties[1], linear), cells(varieties[2], linear),
                       cells(varieties[3], linear)))),
    custom_test(f_oats, X_oats, "Trends of nitrogen within Victory",
                list(c(main(linear), cells("Victory", linear)), c(main(quadratic), cells("Victory", quadratic))),
                K = c(50, 0))
  )), "oats")

# sleepstudy: the prediction for one subject at day 5, with its random part.
sleep <- read_data("sleepstudy.csv", c("Subject"))
f_sleep <- fit_lmer(Reaction ~ Days + (Days | Subject), sleep)
subjects <- levels(sleep$Subject)
X <- cbind(1, sleep$Days)
Z <- do.call(cbind, lapply(subjects, function(s) {
  in_s <- as.numeric(sleep$Subject == s)
  cbind(in_s, in_s * sleep$Days)
}))
Sigma <- as.matrix(VarCorr(f_sleep)$Subject)
s2 <- sigma(f_sleep)^2
G <- kronecker(diag(length(subjects)), Sigma)
W <- cbind(X, Z)
M <- crossprod(W)
M[-(1:2), -(1:2)] <- M[-(1:2), -(1:2)] + s2 * solve(G)
C <- s2 * solve(M)
prediction <- function(subject, days) {
  k <- match(subject, subjects)
  z <- numeric(ncol(Z))
  z[2 * k - 1] <- 1
  z[2 * k] <- days
  w <- c(1, days, z)
  est <- sum(c(fixef(f_sleep), as.vector(t(as.matrix(ranef(f_sleep)$Subject[subjects, ])))) * c(1, days, z))
  from_predict <- predict(f_sleep, newdata = data.frame(Days = days, Subject = subject))
  stopifnot(abs(est - from_predict) < 1e-8 * abs(est))
  list(subject = subject, days = days, estimate = unname(from_predict), se = sqrt(drop(t(w) %*% C %*% w)))
}
fixed_day5 <- custom_test(f_sleep, fixed_design(~ Days, sleep, character(0)), "Mean at day 5",
                          list(c("Intercept" = 1, "Days" = 5)))
write_reference_json(list(
  model = "Reaction ~ Days + (Days | Subject), REML",
  tests = list(fixed_day5),
  predictions = list(prediction("308", 5), prediction("310", 5))
), "sleepstudy")
