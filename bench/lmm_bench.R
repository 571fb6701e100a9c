# The R side of bench/lmm_bench.cpp: fits the same simulated files and real
# datasets with lme4 (nlme for the residual AR1 model of BodyWeight) and
# prints the time of each fit.
#
#   Rscript bench/lmm_bench.R [DIR] [DATA_DIR] [SIZES] [CROSSED]
#
# DIR holds the simulated files lmm_<subjects>.csv that glmix_lmm_bench wrote
# ($TMPDIR/glmix_lmm_bench, or /tmp/glmix_lmm_bench, by default); DATA_DIR the
# real datasets (examples/data); SIZES a comma-separated list of subject
# counts (1000,10000,100000), or "none" for the real datasets alone;
# CROSSED a comma-separated list of RECORDS:LEVELS of the crossed files
# crossed_<records>_<levels>.csv, "teaching" for teaching.csv and
# "levels:L" for levels_<L>.csv (written by glmix_lmm_bench --crossed,
# --teaching and --levels); given CROSSED, only those are fitted.
#
# The time of a fit is that of lmer() (gls() for BodyWeight) on a data frame
# already in memory, with lme4's default optimiser: model frame, design
# matrices and REML estimation. Small fits are repeated until half a second
# has passed, and the mean is shown, as elapsed and as processor time.
# lme4's convergence-check warnings are not shown. "peak MiB" is the R
# process's high-water mark of resident memory so far (VmHWM), R itself and
# its packages included, so run one size per process for the peak of that
# size alone.

suppressPackageStartupMessages({
  library(lme4)
  library(nlme)
})

args <- commandArgs(trailingOnly = TRUE)
tmp <- Sys.getenv("TMPDIR", "/tmp")
dir <- if (length(args) >= 1) args[1] else file.path(tmp, "glmix_lmm_bench")
data_dir <- if (length(args) >= 2) args[2] else "examples/data"
sizes <- if (length(args) >= 3) suppressWarnings(as.integer(strsplit(args[3], ",")[[1]])) else c(1000L, 10000L, 100000L)
sizes <- sizes[!is.na(sizes)]
crossed <- if (length(args) >= 4) strsplit(args[4], ",")[[1]] else character(0)
min_seconds <- 0.5

peak_mib <- function() {
  status <- readLines("/proc/self/status")
  line <- status[startsWith(status, "VmHWM:")]
  if (length(line) == 0) return(NA_real_)
  as.numeric(gsub("[^0-9]", "", line)) / 1024
}

time_fits <- function(fit) {
  invisible(gc())
  n <- 0
  start <- proc.time()
  repeat {
    m <- suppressWarnings(fit())
    n <- n + 1
    if (proc.time()[["elapsed"]] - start[["elapsed"]] >= min_seconds) break
  }
  used <- proc.time() - start
  list(seconds = used[["elapsed"]] / n, cpu = (used[["user.self"]] + used[["sys.self"]]) / n, repeats = n, model = m,
       peak = peak_mib())
}

crit <- function(m) if (inherits(m, "merMod")) REMLcrit(m) else -2 * as.numeric(logLik(m))

report <- function(name, subjects, records, read_s, t) {
  cat(sprintf("%-12s %9s %9d %8s %6d %12.5f %12.5f %14.4f %9.1f\n", name, subjects, records, read_s, t$repeats,
              t$seconds, t$cpu, crit(t$model), t$peak))
}

cat(sprintf("lme4 %s, nlme %s, %s\n", packageVersion("lme4"), packageVersion("nlme"), R.version.string))
cat(sprintf("%-12s %9s %9s %8s %6s %12s %12s %14s %9s\n", "data", "subjects", "records", "read s", "fits",
            "fit s", "fit cpu s", "-2LL", "peak MiB"))

for (item in crossed) {
  if (item == "teaching") {
    path <- file.path(dir, "teaching.csv")
    read_s <- system.time(d <- read.csv(path))[["elapsed"]]
    for (v in c("service", "s", "d", "dept")) d[[v]] <- factor(d[[v]])
    t <- time_fits(function() lmer(y ~ service + (1 | s) + (1 | d) + (1 | dept), data = d, REML = TRUE))
    report("teaching", "-", nrow(d), sprintf("%.3f", read_s), t)
    next
  }
  parts <- strsplit(item, ":")[[1]]
  if (parts[1] == "levels") {
    path <- file.path(dir, sprintf("levels_%s.csv", parts[2]))
    read_s <- system.time(d <- read.csv(path))[["elapsed"]]
    d$f <- factor(d$f)
    d$g <- factor(d$g)
    t <- time_fits(function() lmer(y ~ f + (1 | g), data = d, REML = TRUE))
    report("levels", parts[2], nrow(d), sprintf("%.3f", read_s), t)
    next
  }
  path <- file.path(dir, sprintf("crossed_%s_%s.csv", parts[1], parts[2]))
  read_s <- system.time(d <- read.csv(path))[["elapsed"]]
  d$a <- factor(d$a)
  d$b <- factor(d$b)
  t <- time_fits(function() lmer(y ~ 1 + (1 | a) + (1 | b), data = d, REML = TRUE))
  report("crossed", parts[2], nrow(d), sprintf("%.3f", read_s), t)
}
if (length(crossed) > 0) quit(save = "no")

for (n in sizes) {
  path <- file.path(dir, sprintf("lmm_%d.csv", n))
  if (!file.exists(path)) {
    cat(sprintf("missing %s: run glmix_lmm_bench first\n", path))
    next
  }
  read_s <- system.time(d <- read.csv(path))[["elapsed"]]
  d$subject <- factor(d$subject)
  t <- time_fits(function() lmer(y ~ x + (x | subject), data = d, REML = TRUE))
  report("simulated", n, nrow(d), sprintf("%.3f", read_s), t)
}

read_factors <- function(file, factors) {
  d <- read.csv(file.path(data_dir, file), stringsAsFactors = FALSE)
  for (v in factors) d[[v]] <- factor(d[[v]])
  d
}

real <- list(
  list("sleepstudy", "sleepstudy.csv", "Subject", function(d) lmer(Reaction ~ Days + (Days | Subject), d)),
  list("orthodont", "orthodont.csv", c("Subject", "Sex"), function(d) lmer(distance ~ age * Sex + (age | Subject), d)),
  list("oats", "oats.csv", c("Block", "Variety", "nitro"),
       function(d) lmer(yield ~ Variety * nitro + (1 | Block) + (1 | Block:Variety), d)),
  list("machines", "machines.csv", c("Worker", "Machine"),
       function(d) lmer(score ~ Machine + (1 | Worker) + (1 | Worker:Machine), d)),
  list("pastes", "pastes.csv", c("batch", "cask"), function(d) lmer(strength ~ 1 + (1 | batch) + (1 | batch:cask), d)),
  list("penicillin", "penicillin.csv", c("plate", "sample"),
       function(d) lmer(diameter ~ 1 + (1 | plate) + (1 | sample), d)),
  list("dyestuff", "dyestuff.csv", "Batch", function(d) lmer(Yield ~ 1 + (1 | Batch), d)),
  list("bodyweight", "bodyweight.csv", c("Rat", "Diet"), function(d) {
    d$pos <- match(d$Time, sort(unique(d$Time)))
    gls(weight ~ Diet * Time, data = d, correlation = corAR1(form = ~ pos | Rat), method = "REML")
  }))

for (r in real) {
  read_s <- system.time(d <- read_factors(r[[2]], r[[3]]))[["elapsed"]]
  fit <- r[[4]]
  t <- time_fits(function() fit(d))
  report(r[[1]], "-", nrow(d), sprintf("%.4f", read_s), t)
}
