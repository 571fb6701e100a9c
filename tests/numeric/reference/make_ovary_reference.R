# The data and the reference values of the periodic example (examples/ovary.gmx).
#
# Writes examples/data/ovary.csv from nlme's Ovary data (counts of ovarian
# follicles of 11 mares over an estrus cycle, time scaled so that the
# ovulations fall at 0 and 1), fits the example's model with lme4 (REML) and
# writes tests/data/numeric/reference/ovary.json. The tests only read these
# files; R is needed only to regenerate them:
#
#   Rscript tests/numeric/reference/make_ovary_reference.R      (from the repository root)
#
# Checked with R 4.2, lme4 1.1-31, lmerTest 3.1-3, nlme 3.1-162, numDeriv.
#
# The model: follicles ~ sin(2 pi Time) + cos(2 pi Time) + (1 | Mare), the
# season terms computed in R exactly as the example computes them. Written:
# -2 restricted log likelihood, the fixed estimates with Satterthwaite df
# (lmerTest), the Type III tests, the two variances, and per record (in the
# order of the file) the prediction with the random effects (predict()) and
# the residual (residuals()).

suppressPackageStartupMessages({
  library(lme4)
  library(lmerTest)
  library(nlme)
  library(jsonlite)
  library(numDeriv)
})

args <- commandArgs(trailingOnly = TRUE)
data_dir <- if (length(args) >= 1) args[1] else "examples/data"
out_dir <- if (length(args) >= 2) args[2] else "tests/data/numeric/reference"

script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

# The data file: mares by their number, times with every digit R holds.
ovary <- as.data.frame(nlme::Ovary)
csv <- data.frame(Mare = as.integer(as.character(ovary$Mare)), Time = ovary$Time, follicles = ovary$follicles)
lines <- c("Mare,Time,follicles",
           sprintf("%d,%s,%s", csv$Mare, as.character(csv$Time), as.character(csv$follicles)))
writeLines(lines, file.path(data_dir, "ovary.csv"))

d <- read.csv(file.path(data_dir, "ovary.csv"))
stopifnot(all(d$Time == csv$Time), nrow(d) == 308)
d$cycle_sin <- sin(2 * pi * d$Time)
d$cycle_cos <- cos(2 * pi * d$Time)
d$Mare <- factor(d$Mare)

m <- fit_lmer(follicles ~ cycle_sin + cycle_cos + (1 | Mare), d, reml = TRUE)
co <- summary(m)$coefficients
names_ours <- c("Intercept", "cycle_sin", "cycle_cos")
stopifnot(all(rownames(co) == c("(Intercept)", "cycle_sin", "cycle_cos")))
beta <- lapply(seq_len(nrow(co)), function(i)
  list(name = names_ours[i], estimate = co[i, "Estimate"], se = co[i, "Std. Error"], df = co[i, "df"],
       p = co[i, "Pr(>|t|)"]))
a <- anova(m, type = 3, ddf = "Satterthwaite")
type3 <- lapply(seq_len(nrow(a)), function(i)
  list(term = rownames(a)[i], F = a[i, "F value"], numDF = a[i, "NumDF"], denDF = a[i, "DenDF"],
       p = a[i, "Pr(>F)"]))
vc <- as.data.frame(VarCorr(m))
predicted <- unname(predict(m))
residual <- unname(residuals(m))
stopifnot(max(abs(predicted + residual - d$follicles)) < 1e-9)
scores <- lapply(seq_len(nrow(d)), function(i) list(row = i - 1, predicted = predicted[i], residual = residual[i]))

fixture <- list(model = "ovary", data = "ovary.csv", method = "REML",
                notes = "follicles ~ sin(2 pi Time) + cos(2 pi Time); RANDOM intercept / SUBJECT=Mare",
                minus2ll = REMLcrit(m), beta = beta, typeIII = type3,
                covparams = vc_list(c("Variance", "Residual"), c(vc$vcov[vc$grp == "Mare"], vc$vcov[vc$grp == "Residual"])),
                scores = scores)
write_reference_json(fixture, "ovary")
cat(sprintf("ovary -2RLL %.8f\n", fixture$minus2ll))
