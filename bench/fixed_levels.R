# Times lme4's fit of the 1,000-level file that bench/fixed_levels.py writes
# (y ~ f + (1 | g), REML), processor time of the fit alone, and prints its
# -2 REML log likelihood for comparison with glmixfit's.
#
#   python3 bench/fixed_levels.py /tmp/lv
#   Rscript bench/fixed_levels.R /tmp/lv
suppressMessages(library(lme4))
args <- commandArgs(trailingOnly = TRUE)
dir <- if (length(args) > 0) args[1] else "/tmp/lv"
d <- read.csv(file.path(dir, "lv.csv"))
d$f <- factor(d$f)
d$g <- factor(d$g)
t <- system.time(m <- lmer(y ~ f + (1 | g), data = d, REML = TRUE))
cat(sprintf("lmer: %.2f s processor (%.2f s elapsed), -2 REML log L %.6f\n",
            t[["user.self"]] + t[["sys.self"]], t[["elapsed"]], -2 * as.numeric(logLik(m))))
