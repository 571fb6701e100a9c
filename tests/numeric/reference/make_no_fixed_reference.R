# Reference values for a model without fixed parameters: the dyestuff yields
# with a random intercept per batch and no intercept, Yield ~ 0 + (1 | Batch).
# Without fixed parameters the restricted and the full likelihood coincide.
#
#   Rscript tests/numeric/reference/make_no_fixed_reference.R   (from the repository root)
#
# Checked with R 4.2, lme4 1.1-31, jsonlite.

library(lme4)
library(jsonlite)

d <- read.csv("examples/data/dyestuff.csv")
control <- lmerControl(optimizer = "nloptwrap",
                       optCtrl = list(algorithm = "NLOPT_LN_BOBYQA", xtol_abs = 1e-14, ftol_abs = 1e-16,
                                      xtol_rel = 1e-14, ftol_rel = 1e-16, maxeval = 100000))
m <- lmer(Yield ~ 0 + (1 | Batch), data = d, REML = TRUE, control = control)
vc <- as.data.frame(VarCorr(m))
out <- list(model = "Yield ~ 0 + (1 | Batch), REML",
            minus2ll = -2 * as.numeric(logLik(m)),
            var_batch = vc$vcov[vc$grp == "Batch"],
            var_residual = vc$vcov[vc$grp == "Residual"])
writeLines(toJSON(out, auto_unbox = TRUE, digits = NA, pretty = TRUE),
           "tests/data/numeric/reference/dyestuff_no_fixed.json")
