# Reference values for the engine's estimated marginal means.
#
# Fits three models with lme4 + lmerTest and computes marginal means,
# contrasts of a compared factor and the joint tests of that factor with
# emmeans, then writes one JSON file per model into
# tests/data/numeric/reference/emmeans/. The tests only read these files; R
# is needed only to regenerate them:
#
#   Rscript tests/numeric/reference/make_emmeans_reference.R   (from the repository root)
#
# Checked with R 4.2, lme4 1.1-31, lmerTest 3.1-3, emmeans 1.8.4-1, numDeriv.
#
# Conventions:
#
# * Factor levels are sorted ascending (numerically for numeric columns,
#   byte-wise for text) and written as the level's text; cells, contrasts and
#   tests name their levels, so the order of the rows does not matter.
# * Degrees of freedom are Satterthwaite's (emmeans with
#   lmer.df = "satterthwaite"); the reference grid weights the levels of the
#   factors not in the table equally and holds covariates at their mean or at
#   the value given.
# * Contrasts within each combination of the other factors of the table
#   (emmeans' `by`), and the adjustment family is that combination:
#   - "pairwise": level i - level j for i < j;
#   - "simple": every other level - the reference level (emmeans'
#     "trt.vs.ctrl" with ref =);
#   - "deviation": every level - the unweighted mean of all levels (emmeans'
#     "eff"; "del.eff" would compare with the mean of the other levels).
# * Adjustments: "lsd" is adjust = "none"; "seqbonferroni" is adjust = "holm",
#   with intervals at the single-step Bonferroni level; "seqsidak" is the
#   step-down Sidak method, computed here from the unadjusted p values
#   (p_(i) = max_{j <= i} 1 - (1 - p_(j))^(m - j + 1)), with intervals at the
#   single-step Sidak level (confint with adjust = "sidak").
# * Joint tests of the compared factor within each combination of the other
#   factors: lmerTest's contest() on the rows mean(level j) - mean(last level)
#   of the reference grid, with the Fai-Cornelius denominator df.
# * "automatic": the tables of every fixed effect made of factors only, in
#   ascending order of the p value of its Type III test; "grand_mean": the
#   mean over the whole reference grid.
# * Fits use tight optimiser tolerances followed by Newton steps with
#   numerical derivatives on lme4's deviance function.

suppressPackageStartupMessages({
  library(lme4)
  library(lmerTest)
  library(emmeans)
  library(jsonlite)
  library(numDeriv)
})

args <- commandArgs(trailingOnly = TRUE)
data_dir <- if (length(args) >= 1) args[1] else "examples/data"
out_dir <- if (length(args) >= 2) args[2] else "tests/data/numeric/reference/emmeans"
dir.create(out_dir, showWarnings = FALSE, recursive = TRUE)

emm_options(lmer.df = "satterthwaite", lmerTest.limit = 1e6)

# The shared helpers stand next to this script.
script_file <- sub("^--file=", "", grep("^--file=", commandArgs(trailingOnly = FALSE), value = TRUE))
source(file.path(if (length(script_file) == 1) dirname(script_file) else "tests/numeric/reference", "reference_helpers.R"))

# Marginal means do not depend on the coding: the factors keep R's default
# contrasts.
read_factors <- function(file, factors) read_data(file, factors, last_reference = FALSE)

levels_of <- function(row, vars) {
  out <- lapply(vars, function(v) as.character(row[[v]]))
  names(out) <- vars
  out
}

means_table <- function(emm, factors) {
  s <- as.data.frame(summary(emm, infer = c(TRUE, FALSE)))
  lapply(seq_len(nrow(s)), function(i)
    list(levels = levels_of(s[i, , drop = FALSE], factors), estimate = s$emmean[i], se = s$SE[i], df = s$df[i],
         lower = s$lower.CL[i], upper = s$upper.CL[i]))
}

step_down_sidak <- function(p) {
  m <- length(p)
  o <- order(p)
  adj <- numeric(m)
  run <- 0
  for (j in seq_len(m)) {
    run <- max(run, 1 - (1 - p[o[j]])^(m - j + 1))
    adj[o[j]] <- min(1, run)
  }
  adj
}

# The contrast rows of one by-group, as (level, reference) pairs; NULL
# reference for a comparison with the mean of all levels.
contrast_pairs <- function(lev, contrast, reference) {
  k <- length(lev)
  if (contrast == "pairwise") {
    pr <- combn(k, 2)
    lapply(seq_len(ncol(pr)), function(c) list(level = lev[pr[1, c]], reference = lev[pr[2, c]]))
  } else if (contrast == "simple") {
    r <- match(reference, lev)
    lapply(setdiff(seq_len(k), r), function(i) list(level = lev[i], reference = lev[r]))
  } else {
    lapply(seq_len(k), function(i) list(level = lev[i], reference = NULL))
  }
}

request <- function(m, data, name, factors, compare = NULL, contrast = "none", reference = NULL, adjust = "lsd",
                    at = list()) {
  emm <- emmeans(m, factors, at = at)
  out <- list(name = name, factors = as.list(factors), compare = compare, contrast = contrast,
              reference = reference, adjust = adjust, at = at, means = means_table(emm, factors))
  if (is.null(compare)) return(out)
  by <- setdiff(factors, compare)
  by_arg <- if (length(by) > 0) by else NULL
  lev <- levels(data[[compare]])
  grid <- as.data.frame(summary(emm))
  by_groups <- if (length(by) > 0) unique(grid[, by, drop = FALSE]) else data.frame(row.names = 1)
  by_key <- function(row) if (length(by) > 0) paste(vapply(by, function(v) as.character(row[[v]]), ""), collapse = "\r") else ""

  if (contrast != "none") {
    method <- switch(contrast, pairwise = "pairwise", simple = "trt.vs.ctrl", deviation = "eff")
    extra <- if (contrast == "simple") list(ref = match(reference, lev)) else list()
    run <- function(adj) do.call(emmeans::contrast, c(list(emm, method = method, by = by_arg, adjust = adj), extra))
    raw <- as.data.frame(summary(run("none"), infer = c(TRUE, TRUE)))
    ci <- switch(adjust, lsd = raw,
                 seqbonferroni = as.data.frame(summary(run("holm"), infer = c(TRUE, TRUE))),
                 seqsidak = as.data.frame(confint(run("sidak"))))
    padj <- switch(adjust, lsd = raw$p.value,
                   seqbonferroni = as.data.frame(summary(run("holm"), infer = c(FALSE, TRUE)))$p.value,
                   seqsidak = {
                     p <- raw$p.value
                     keys <- vapply(seq_len(nrow(raw)), function(i) by_key(raw[i, , drop = FALSE]), "")
                     for (key in unique(keys)) p[keys == key] <- step_down_sidak(p[keys == key])
                     p
                   })
    pairs <- contrast_pairs(lev, contrast, reference)
    rows <- list()
    for (g in seq_len(nrow(by_groups))) {
      key <- by_key(by_groups[g, , drop = FALSE])
      idx <- which(vapply(seq_len(nrow(raw)), function(i) by_key(raw[i, , drop = FALSE]), "") == key)
      stopifnot(length(idx) == length(pairs))
      for (j in seq_along(idx)) {
        i <- idx[j]
        rows[[length(rows) + 1]] <- list(
          by = levels_of(by_groups[g, , drop = FALSE], by), level = pairs[[j]]$level,
          reference = pairs[[j]]$reference, label = as.character(raw$contrast[i]),
          estimate = raw$estimate[i], se = raw$SE[i], t = raw$t.ratio[i], df = raw$df[i], p = raw$p.value[i],
          p_adjusted = padj[i], lower = ci$lower.CL[i], upper = ci$upper.CL[i])
      }
    }
    out$contrasts <- rows
  }

  # Joint tests: rows mean(level j) - mean(last level) within each by-group.
  L <- emm@linfct
  tests <- list()
  for (g in seq_len(nrow(by_groups))) {
    key <- by_key(by_groups[g, , drop = FALSE])
    cells <- which(vapply(seq_len(nrow(grid)), function(i) by_key(grid[i, , drop = FALSE]), "") == key)
    cells <- cells[match(lev, as.character(grid[[compare]][cells]))]
    last <- cells[length(cells)]
    Lb <- L[cells[-length(cells)], , drop = FALSE] - matrix(L[last, ], nrow = length(cells) - 1, ncol = ncol(L),
                                                            byrow = TRUE)
    ct <- contest(m, Lb, joint = TRUE)
    tests[[length(tests) + 1]] <- list(by = levels_of(by_groups[g, , drop = FALSE], by), F = ct[["F value"]],
                                       df1 = ct[["NumDF"]], df2 = ct[["DenDF"]], p = ct[["Pr(>F)"]])
  }
  out$tests <- tests
  out
}

automatic <- function(m, factor_terms) {
  a <- anova(m, type = 3, ddf = "Satterthwaite")
  p <- a[factor_terms, "Pr(>F)"]
  lapply(factor_terms[order(p)], function(term) {
    f <- strsplit(term, ":", fixed = TRUE)[[1]]
    list(term = gsub(":", "*", term, fixed = TRUE), factors = as.list(f), p = a[term, "Pr(>F)"],
         means = means_table(emmeans(m, f), f))
  })
}

grand_mean <- function(m, at = list()) {
  s <- as.data.frame(summary(emmeans(m, ~1, at = at), infer = c(TRUE, FALSE)))
  list(estimate = s$emmean[1], se = s$SE[1], df = s$df[1], lower = s$lower.CL[1], upper = s$upper.CL[1])
}

write_fixture <- function(name, fixture) {
  write_reference_json(fixture, name, null = "null")
  cat(sprintf("%-12s %d requests\n", name, length(fixture$requests)))
}

# Oats: split plot, Variety on whole plots within Block, nitro on sub-plots.
oats <- read_factors("oats.csv", c("Block", "Variety", "nitro"))
m <- fit_lmer(yield ~ Variety * nitro + (1 | Block) + (1 | Block:Variety), oats)
write_fixture("oats", list(
  model = "oats", data = "oats.csv", formula = "yield ~ Variety * nitro + (1 | Block) + (1 | Block:Variety)",
  requests = list(
    request(m, oats, "nitro within Variety, pairwise", c("Variety", "nitro"), "nitro", "pairwise"),
    request(m, oats, "Variety within nitro, simple, sequential Bonferroni", c("Variety", "nitro"), "Variety",
            "simple", "Golden Rain", "seqbonferroni"),
    request(m, oats, "nitro within Variety, deviation, sequential Sidak", c("Variety", "nitro"), "nitro",
            "deviation", NULL, "seqsidak"),
    request(m, oats, "nitro, pairwise, sequential Bonferroni", c("nitro"), "nitro", "pairwise", NULL, "seqbonferroni"),
    request(m, oats, "nitro then Variety, simple to the last", c("nitro", "Variety"), "Variety", "simple",
            "Victory", "seqsidak"),
    request(m, oats, "Variety, no compare factor", c("Variety"))),
  automatic = automatic(m, c("Variety", "nitro", "Variety:nitro")),
  grand_mean = grand_mean(m)))

# Machines: Machine fixed; Worker and Worker*Machine random.
machines <- read_factors("machines.csv", c("Worker", "Machine"))
m <- fit_lmer(score ~ Machine + (1 | Worker) + (1 | Worker:Machine), machines)
write_fixture("machines", list(
  model = "machines", data = "machines.csv", formula = "score ~ Machine + (1 | Worker) + (1 | Worker:Machine)",
  requests = list(
    request(m, machines, "pairwise", c("Machine"), "Machine", "pairwise"),
    request(m, machines, "pairwise, sequential Bonferroni", c("Machine"), "Machine", "pairwise", NULL, "seqbonferroni"),
    request(m, machines, "pairwise, sequential Sidak", c("Machine"), "Machine", "pairwise", NULL, "seqsidak"),
    request(m, machines, "simple to B, sequential Sidak", c("Machine"), "Machine", "simple", "B", "seqsidak"),
    request(m, machines, "deviation, sequential Bonferroni", c("Machine"), "Machine", "deviation", NULL,
            "seqbonferroni"),
    request(m, machines, "compare factor without contrasts", c("Machine"), "Machine", "none")),
  automatic = automatic(m, c("Machine")),
  grand_mean = grand_mean(m)))

# Orthodont: growth with age by Sex, random intercept by Subject.
ortho <- read_factors("orthodont.csv", c("Sex", "Subject"))
m <- fit_lmer(distance ~ age * Sex + (1 | Subject), ortho)
write_fixture("orthodont", list(
  model = "orthodont", data = "orthodont.csv", formula = "distance ~ age * Sex + (1 | Subject)",
  requests = list(
    request(m, ortho, "Sex at the mean age", c("Sex"), "Sex", "pairwise"),
    request(m, ortho, "Sex at age 14", c("Sex"), "Sex", "simple", "Female", "seqbonferroni", at = list(age = 14)),
    request(m, ortho, "Sex at age 8.5, deviation", c("Sex"), "Sex", "deviation", NULL, "seqsidak",
            at = list(age = 8.5))),
  automatic = automatic(m, c("Sex")),
  grand_mean = grand_mean(m)))
