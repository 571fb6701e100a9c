# The Laplace fits of bench/glmm_bench.cpp with lme4::glmer (nAGQ = 1, its
# default two stages) on the same files. Prints processor time, -2 log
# likelihood and the estimates.
#
#   Rscript bench/glmm_bench.R /tmp/glmix_glmm_bench 10000 100000

suppressPackageStartupMessages(library(lme4))
args <- commandArgs(trailingOnly = TRUE)
dir <- if (length(args) >= 1) args[1] else file.path(tempdir(), "glmix_glmm_bench")
sizes <- if (length(args) >= 2) as.integer(args[-1]) else c(10000L, 100000L)
for (n in sizes) {
  d <- read.csv(file.path(dir, sprintf("glmm_%d.csv", n)))
  d$subject <- factor(d$subject)
  t <- system.time(fit <- glmer(y ~ x + (1 | subject), family = binomial, data = d))
  cat(sprintf("glmer      records %7d  cpu %8.3f s  -2LL %.4f  b %s  var %.5f\n", n, t[["user.self"]] + t[["sys.self"]],
              -2 * as.numeric(logLik(fit)), paste(sprintf("%.5f", fixef(fit)), collapse = " "),
              as.numeric(VarCorr(fit)$subject)))
}
