#!/usr/bin/env python3
"""Writes the model documents of fits our engine cannot make yet: binomial
with trials, Poisson, gamma with a power link, negative binomial, ordinal
with thresholds, nominal with several coefficient sets, inverse Gaussian
with a log link, and a model that
carries every message of the family. Each fixture is a model file
(NAME.pmml.xml) and a StatXML document (NAME.statxml.xml) over the data in
clinic.csv.

The numbers are made up but consistent with each other: t = estimate / SE,
p values and intervals from the t (or normal) distribution, Exp columns the
exponentials, row sums of the classification table, counts of the
histograms, the first subject's records as they stand in clinic.csv. Every
number is written with six significant digits, so the tests can state them
as they stand in the files.

clinic.pmml.xml describes every field of the data, for documents that
tests write by hand.

Run from this folder:  python3 make_fixtures.py
"""

import math

# ----------------------------------------------------------------------------
# Distributions


def betacf(a, b, x):
    # Continued fraction of the incomplete beta function (modified Lentz).
    tiny = 1e-300
    c, d = 1.0, 1.0 - (a + b) * x / (a + 1.0)
    d = 1.0 / (d if abs(d) > tiny else tiny)
    h = d
    for m in range(1, 300):
        m2 = 2 * m
        aa = m * (b - m) * x / ((a + m2 - 1.0) * (a + m2))
        d = 1.0 + aa * d
        d = 1.0 / (d if abs(d) > tiny else tiny)
        c = 1.0 + aa / c
        c = c if abs(c) > tiny else tiny
        h *= d * c
        aa = -(a + m) * (a + b + m) * x / ((a + m2) * (a + m2 + 1.0))
        d = 1.0 + aa * d
        d = 1.0 / (d if abs(d) > tiny else tiny)
        c = 1.0 + aa / c
        c = c if abs(c) > tiny else tiny
        delta = d * c
        h *= delta
        if abs(delta - 1.0) < 1e-15:
            break
    return h


def ibeta(a, b, x):
    if x <= 0.0:
        return 0.0
    if x >= 1.0:
        return 1.0
    lbeta = math.lgamma(a + b) - math.lgamma(a) - math.lgamma(b)
    front = math.exp(lbeta + a * math.log(x) + b * math.log(1.0 - x))
    if x < (a + 1.0) / (a + b + 2.0):
        return front * betacf(a, b, x) / a
    return 1.0 - front * betacf(b, a, 1.0 - x) / b


def t_cdf(t, df):
    x = df / (df + t * t)
    tail = 0.5 * ibeta(df / 2.0, 0.5, x)
    return 1.0 - tail if t > 0 else tail


def t_quantile(p, df):
    lo, hi = -1000.0, 1000.0
    for _ in range(200):
        mid = (lo + hi) / 2.0
        if t_cdf(mid, df) < p:
            lo = mid
        else:
            hi = mid
    return (lo + hi) / 2.0


def norm_cdf(z):
    return 0.5 * math.erfc(-z / math.sqrt(2.0))


def f_sig(f, df1, df2):
    # P(F > f) for the F distribution.
    x = df2 / (df2 + df1 * f)
    return ibeta(df2 / 2.0, df1 / 2.0, x)


def r6(v):
    return float("%.6g" % v)


def num(v):
    if v is None:
        return ""
    return repr(r6(v))


# ----------------------------------------------------------------------------
# XML


class X:
    def __init__(self, name, attrs=None, children=None, text=None):
        self.name = name
        self.attrs = attrs or []
        self.children = children or []
        self.text = text

    def add(self, child):
        self.children.append(child)
        return child

    def render(self, depth=0):
        pad = "  " * depth
        attrs = "".join(' %s="%s"' % (k, esc(v)) for k, v in self.attrs)
        if self.text is not None:
            return "%s<%s%s>%s</%s>\n" % (pad, self.name, attrs, esc(self.text), self.name)
        if not self.children:
            return "%s<%s%s/>\n" % (pad, self.name, attrs)
        inner = "".join(c.render(depth + 1) for c in self.children)
        return "%s<%s%s>\n%s%s</%s>\n" % (pad, self.name, attrs, inner, pad, self.name)


def esc(v):
    return str(v).replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;").replace('"', "&quot;")


def array(items, kind="real"):
    texts = []
    for item in items:
        if kind == "real":
            texts.append("__MISSING__" if item is None else num(item))
        else:
            s = str(item)
            texts.append('"%s"' % s if (" " in s or s == "") else s)
    return X("Array", [("n", str(len(items))), ("type", kind)], text=" ".join(texts))


def write(path, root):
    with open(path, "w") as f:
        f.write('<?xml version="1.0" encoding="UTF-8"?>\n')
        f.write(root.render())


# ----------------------------------------------------------------------------
# The data

PATIENTS = [1, 2, 3, 4, 5, 6]
VISITS = [1, 2, 3, 4]
TREATMENT = {1: "A", 2: "A", 3: "A", 4: "B", 5: "B", 6: "B"}
CHOICES = ["home", "ward", "icu"]


def clinic_rows():
    rows = []
    for p in PATIENTS:
        for v in VISITS:
            dose = 10 * v if TREATMENT[p] == "A" else 5 * v
            trials = 8 + (p + v) % 5
            events = min(trials, (p * 3 + v * 2) % (trials + 1))
            count = (p * v + 3) % 9
            cost = round(120.5 + 17.25 * p + 9.5 * v + (p * v % 4) * 3.75, 2)
            severity = 1 + (p + 2 * v) % 3
            choice = CHOICES[(p + v) % 3]
            rows.append((p, v, TREATMENT[p], dose, events, trials, count, cost, severity, choice))
    return rows


ROWS = clinic_rows()


def write_data():
    with open("clinic.csv", "w") as f:
        f.write("patient,visit,treatment,dose,events,trials,count,cost,severity,choice\n")
        for r in ROWS:
            f.write("%d,%d,%s,%d,%d,%d,%d,%.2f,%d,%s\n" % r)
    with open("clinic.dictionary.json", "w") as f:
        f.write("""{
  "variables": {
    "patient": { "label": "Patient", "level": "nominal" },
    "visit": { "label": "Visit", "level": "ordinal" },
    "treatment": { "label": "Treatment", "level": "nominal", "value_labels": { "A": "Active", "B": "Placebo" } },
    "dose": { "label": "Dose (mg)", "level": "scale", "format": "F4.0" },
    "events": { "label": "Responders", "level": "scale", "format": "F3.0" },
    "trials": { "label": "Patients treated", "level": "scale", "format": "F3.0" },
    "count": { "label": "Seizures", "level": "scale", "format": "F3.0" },
    "cost": { "label": "Cost of care", "level": "scale", "format": "F8.2" },
    "severity": { "label": "Severity", "level": "ordinal", "value_labels": { "1": "mild", "2": "moderate", "3": "severe" } },
    "choice": { "label": "Discharge destination", "level": "nominal" }
  }
}
""")


COLUMN = {"patient": 0, "visit": 1, "treatment": 2, "dose": 3, "events": 4, "trials": 5, "count": 6, "cost": 7,
          "severity": 8, "choice": 9}


def column(name):
    return [r[COLUMN[name]] for r in ROWS]


# ----------------------------------------------------------------------------
# Model files


def field(name, optype, string=False, values=None, role="active"):
    return (name, optype, string, values or [], role)


def pmml(target, fields):
    root = X("PMML", [("xmlns", "http://www.dmg.org/PMML-4_4"), ("version", "4.4")])
    header = root.add(X("Header", [("copyright", "(c) fixture")]))
    header.add(X("Application", [("name", "glmixfit"), ("version", "0.1.0")]))
    dictionary = root.add(X("DataDictionary", [("numberOfFields", str(len(fields)))]))
    for i, (name, optype, string, values, role) in enumerate(fields):
        f = dictionary.add(X("DataField", [("name", name), ("optype", optype),
                                           ("dataType", "string" if string else "double")]))
        f.add(X("Extension", [("extender", "glmixfit"), ("name", "recordIndex"), ("value", str(i))]))
        if string:
            width = max(len(v) for v in values) if values else 8
            f.add(X("Extension", [("extender", "glmixfit"), ("name", "stringWidth"), ("value", str(width))]))
        for v in values:
            f.add(X("Value", [("value", str(v)), ("displayValue", str(v))]))
    model = root.add(X("GeneralRegressionModel", [("targetVariableName", target), ("modelType", "generalizedLinear"),
                                                  ("functionName", "regression"), ("algorithmName", "GLMM")]))
    schema = model.add(X("MiningSchema"))
    for (name, optype, string, values, role) in fields:
        schema.add(X("MiningField", [("name", name), ("usageType", role)]))
    return root


# ----------------------------------------------------------------------------
# StatXML pieces


def parameter(name, value=None, child=None):
    attrs = [("name", name)]
    if value is not None:
        attrs.append(("value", value))
    p = X("Parameter", attrs)
    if child is not None:
        p.add(child)
    return p


def list_value(values):
    return X("ListValue", children=[X("Value", [("value", str(v))]) for v in values])


def effect(fields, levels=None):
    levels = levels or [0] * len(fields)
    return X("StructuredValue", children=[
        X("Attribute", [("name", "Fields")], [list_value(fields)]),
        X("Attribute", [("name", "NestingLevels")], [list_value(levels)])])


def random_specs(blocks):
    lst = X("ListValue")
    for b in blocks:
        s = lst.add(X("StructuredValue"))
        s.add(X("Attribute", [("name", "EffectList")], [X("ListValue", children=[effect(e) for e in b["effects"]])]))
        s.add(X("Attribute", [("name", "Intercept"), ("value", "true" if b["intercept"] else "false")]))
        s.add(X("Attribute", [("name", "SubjectSpec")], [effect(b["subjects"])]))
        s.add(X("Attribute", [("name", "GroupSpec")], [list_value(b.get("groups", []))]))
        s.add(X("Attribute", [("name", "CovarianceType"), ("value", b["type"])]))
        s.add(X("Attribute", [("name", "CovarianceTBand"), ("value", "0")]))
    return parameter("RandomSpecs", child=lst)


def emmeans_specs(requests):
    lst = X("ListValue")
    for r in requests:
        s = lst.add(X("StructuredValue"))
        s.add(X("Attribute", [("name", "Factors")], [effect(r["factors"])]))
        s.add(X("Attribute", [("name", "EstimateMeans"), ("value", "true")]))
        if r.get("compare"):
            s.add(X("Attribute", [("name", "CompareFactor"), ("value", r["compare"])]))
        s.add(X("Attribute", [("name", "ContrastType"), ("value", r.get("contrast", "None"))]))
        s.add(X("Attribute", [("name", "ReferenceType"), ("value", r.get("reference", "Last"))]))
        if r.get("referenceValue"):
            s.add(X("Attribute", [("name", "ReferenceValue"), ("value", r["referenceValue"])]))
    return parameter("EMMEANS", child=lst)


def build_settings(target, dist, link, fixed, blocks=(), residual="ID", residual_subjects=(), requests=(),
                   padjust="LSD", trials=None, link_param=None, intercept=True, ci=0.95):
    b = X("BuildSettings")
    b.add(parameter("TargetField", target))
    b.add(parameter("UseTrials", "true" if trials else "false"))
    if trials:
        b.add(parameter("TrialsField", trials))
    b.add(parameter("DistributionOfTarget", dist))
    b.add(parameter("LinkFunctionType", link))
    if link_param is not None:
        b.add(parameter("LinkFunctionParam", num(link_param)))
    b.add(parameter("Intercept", "true" if intercept else "false"))
    b.add(parameter("CIn", num(ci)))
    b.add(parameter("ResidualCovarianceType", residual))
    b.add(parameter("ResidualCovarianceTBand", "0"))
    b.add(parameter("ResidualSubjectSpec", child=effect(list(residual_subjects))))
    b.add(parameter("FixedEffectList", child=X("ListValue", children=[effect(f) for f in fixed])))
    if blocks:
        b.add(random_specs(blocks))
    if requests:
        b.add(emmeans_specs(requests))
    b.add(parameter("pAdjustment", padjust))
    return b


def regression_parameter(name, intercept=False, covariates=(), factors=()):
    p = X("RegressionParameter", [("isIntercept", "true" if intercept else "false"), ("name", name)])
    for c in covariates:
        p.add(X("Covariate", [("field", c), ("power", "1")]))
    for (f, v, nest) in factors:
        p.add(X("Factor", [("field", f), ("value", str(v)), ("nest", "true" if nest else "false")]))
    return p


def string_map(map_id, entries):
    m = X("StringMap", [("mapId", str(map_id))])
    for name, param in entries:
        m.add(X("MapEntry", [("name", name)], [X("Label", children=[param])]))
    return m


def statistic(name, value):
    return X("Statistic", [("name", name), ("value", value)])


def stat_attrs(name, label, est=None, se=None, df=None, lo=None, hi=None, t=None, z=None, sig=None, exp=None,
               exp_lo=None, exp_hi=None, redundant=False):
    return [("paramName", name), ("paramLabel", label), ("estimate", num(est)), ("stdError", num(se)),
            ("df", num(df)), ("confIntervalLower", num(lo)), ("confIntervalUpper", num(hi)), ("tTest", num(t)),
            ("zTest", num(z)), ("sig", num(sig)), ("chiSquare", ""), ("expEstimate", num(exp)),
            ("expCILower", num(exp_lo)), ("expCIUpper", num(exp_hi)), ("isRedundant", "true" if redundant else "false")]


def fixed_stats(name, label, param, est, se, df, effect_index=None, redundant=False, with_exp=True, ci=0.95):
    """A fixed coefficient: t test with df, interval from the t quantile."""
    if redundant:
        e = X("ParameterStats", stat_attrs(name, label, est=0.0, redundant=True))
    else:
        t = est / se
        sig = 2.0 * (1.0 - t_cdf(abs(t), df))
        q = t_quantile(1.0 - (1.0 - ci) / 2.0, df)
        lo, hi = est - q * se, est + q * se
        e = X("ParameterStats", stat_attrs(name, label, est, se, df, lo, hi, t=t, sig=sig,
                                           exp=math.exp(est) if with_exp else None,
                                           exp_lo=math.exp(lo) if with_exp else None,
                                           exp_hi=math.exp(hi) if with_exp else None))
    e.add(param)
    if effect_index is not None:
        e.add(statistic("fixedEffectIndex", str(effect_index)))
    return e


def cov_stats(name, label, pattern, args, est, se, variance=True, fixed=False, ci=0.95):
    """A covariance parameter: Wald Z; a variance gets its one-sided p and
    the interval of 2 Z^2 degrees of freedom approximated by the log scale."""
    if fixed:
        e = X("ParameterStats", stat_attrs(name, label, est=est))
    else:
        z = est / se
        q = 1.959963984540054 if abs(ci - 0.95) < 1e-12 else 1.6448536269514722
        if variance:
            sig = 1.0 - norm_cdf(z)
            lo, hi = est * math.exp(-q * se / est), est * math.exp(q * se / est)
        else:
            sig = 2.0 * (1.0 - norm_cdf(abs(z)))
            lo, hi = est - q * se, est + q * se
        e = X("ParameterStats", stat_attrs(name, label, est, se, None, lo, hi, z=z, sig=sig))
    lst = e.add(X("PrintableList", [("pattern", pattern), ("isKey", "true")]))
    for a in args:
        lst.add(X("PrintableList", [("pattern", str(a))]))
    return e


def segment_info(fields):
    return X("SegmentInfo", children=[X("FieldInfo", [("fieldName", f), ("fieldValue", str(v))]) for f, v in fields])


def message(key, args=()):
    lst = X("PrintableList", [("pattern", key), ("isKey", "true")])
    for a in args:
        lst.add(X("PrintableValue", [("storage", "string"), ("value", a)]))
    return X("Message", children=[lst])


def f_test(f, df1, df2):
    return X("FTest", [("fStatistic", num(f)), ("sig", num(f_sig(f, df1, df2))), ("df1", num(df1)), ("df2", num(df2))])


def model_test(description, f, df1, df2, test_id=None):
    attrs = [("description", description)]
    if test_id is not None:
        attrs.append(("testID", str(test_id)))
    attrs.append(("testType", "III"))
    return X("ModelTestStats", attrs, [f_test(f, df1, df2)])


def histogram(values, bins):
    lo, hi = min(values), max(values)
    width = (hi - lo) / bins if hi > lo else 1.0
    freq = [0] * bins
    for v in values:
        k = min(int((v - lo) / width), bins - 1) if hi > lo else 0
        freq[k] += 1
    mids = [lo + (k + 0.5) * width for k in range(bins)]
    return mids, freq


def target_distribution(values, bins, extra):
    mean = sum(values) / len(values)
    sd = math.sqrt(sum((v - mean) ** 2 for v in values) / (len(values) - 1))
    mids, freq = histogram(values, bins)
    u = X("UnivariateData", [("description", "TargetDistribution")])
    u.add(X("Counts", [("totalFreq", str(len(values)))]))
    u.add(statistic("mean", num(mean)))
    u.add(statistic("stdDeviation", num(sd)))
    for k, v in extra:
        u.add(statistic(k, num(v)))
    u.add(X("Coordinates", [("feature", "observed")], [array(mids)]))
    u.add(X("Coordinates", [("feature", "frequency")], [array(freq)]))
    return u


def observed_by_predicted(observed, predicted):
    b = X("BivariateData", [("description", "observedByPredicted")])
    b.add(X("Counts", [("totalFreq", str(len(observed)))]))
    b.add(X("Coordinates", [("feature", "observed")], [array(observed)]))
    b.add(X("Coordinates", [("feature", "statistic")], [array(predicted)]))
    b.add(X("Coordinates", [("feature", "frequency")], [array([1] * len(observed))]))
    return b


def first_subject(patient, targets):
    """The first patient's records: visit as the repeated measure, and the
    given target fields' values."""
    rows = [r for r in ROWS if r[0] == patient]
    s = X("StructuredData", [("description", "firstSubjectRecordsForDataStructure")])
    s.add(X("Counts", [("totalFreq", str(len(rows)))]))
    seg = s.add(X("SegmentData"))
    seg.add(segment_info([("patient", patient)]))
    mv = seg.add(X("MultivariateData"))
    mv.add(X("CoordinatesGroup", [("description", "repeatedMeasures")],
             [X("Coordinates", [("field", "visit")], [array([r[1] for r in rows], "string")])]))
    tg = mv.add(X("CoordinatesGroup", [("description", "target")]))
    for t in targets:
        tg.add(X("Coordinates", [("field", t)], [array([r[COLUMN[t]] for r in rows], "string")]))
    return s


def random_covariances(block, keys, packed, segments=((),)):
    s = X("StructuredData", [("description", "randomEffectCovariances")])
    s.add(statistic("randomEffectBlock", str(block)))
    labels = s.add(X("MatrixLabels")).add(X("RowColLabels"))
    for k in keys:
        labels.add(X("Label", children=[X("PrintableList", [("pattern", k), ("isKey", "false"), ("mapId", "1")])]))
    q = len(keys)
    for seg_fields, values in zip(segments, packed):
        sd = s.add(X("SegmentData"))
        sd.add(segment_info(list(seg_fields)))
        sd.add(X("Matrix", [("description", "randomEffectCovariance"), ("nbRows", str(q)), ("nbCols", str(q)),
                            ("kind", "symmetric")], [array(values)]))
    return s


def classification(labels, counts):
    n = len(counts)
    m = X("Matrix", [("description", "classificationTable"), ("nbRows", str(n)), ("nbCols", str(n)),
                     ("kind", "general")])
    if labels:
        rc = m.add(X("MatrixLabels")).add(X("RowColLabels"))
        for l in labels:
            rc.add(X("Label", [("label", str(l))]))
    m.add(array([c for row in counts for c in row]))
    return m


def statxml(settings, maps, diagnostics, training):
    root = X("StatXML", [("version", "1.0")])
    root.add(settings)
    model = root.add(X("PMMLModel"))
    model.add(X("PredictiveSummary", [("algorithmName", "GLMM")]))
    for m in maps:
        model.add(m)
    model.add(diagnostics)
    model.add(training)
    return root


def diagnostics_element(aicc, bic, m2ll, n_rep, n_rand, n_fixed, n_cols_random, n_subjects, accuracy=None):
    d = X("ModelDiagnostics")
    d.add(statistic("AICC", num(aicc)))
    d.add(statistic("BIC", num(bic)))
    d.add(statistic("minus2LogLikelihood", num(m2ll)))
    if accuracy is not None:
        d.add(statistic("classificationAccuracy", num(accuracy)))
    d.add(statistic("numOfCovParamOfRepeated", str(n_rep)))
    d.add(statistic("numOfCovParamOfRandom", str(n_rand)))
    d.add(statistic("numOfColsOfFixed", str(n_fixed)))
    d.add(statistic("numOfColsOfRandom", str(n_cols_random)))
    d.add(statistic("numOfCommonSubjects", str(n_subjects)))
    return d


def criteria(m2ll, k, n):
    aicc = m2ll + 2.0 * k * n / (n - k - 1.0)
    bic = m2ll + k * math.log(n)
    return aicc, bic


def fixed_map(params):
    return string_map(0, [(name, p) for name, p in params])


def predicted_of(observed, shift):
    return [r6(o * 0.85 + shift + 0.1 * (i % 3)) for i, o in enumerate(observed)]


# ----------------------------------------------------------------------------
# The fixtures

N = len(ROWS)
DF = 20.0


def treatment_params(prefix_index=1):
    a = regression_parameter("B%d" % prefix_index, factors=[("treatment", "A", False)])
    b = regression_parameter("B%d" % (prefix_index + 1), factors=[("treatment", "B", False)])
    return a, b


def write_binomial():
    fields = [field("events", "continuous", role="target"), field("trials", "continuous", role="supplementary"),
              field("treatment", "categorical", True, ["A", "B"]), field("dose", "continuous"),
              field("patient", "categorical", False, PATIENTS)]
    write("binomial.pmml.xml", pmml("events", fields))
    b0 = regression_parameter("B0", intercept=True)
    b1, b2 = treatment_params()
    b3 = regression_parameter("B3", covariates=["dose"])
    g0 = regression_parameter("G0.0", intercept=True)
    settings = build_settings("events", "BINOMIAL", "LOGIT", [["treatment"], ["dose"]],
                              blocks=[{"effects": [], "intercept": True, "subjects": ["patient"], "type": "VC"}],
                              trials="trials")
    m2ll = 118.734
    aicc, bic = criteria(m2ll, 4, N)
    d = diagnostics_element(aicc, bic, m2ll, 1, 1, 4, 1, 6, accuracy=0.75)
    proportions = [r6(e / t) for e, t in zip(column("events"), column("trials"))]
    d.add(target_distribution(proportions, 5, []))
    d.add(observed_by_predicted(proportions, predicted_of(proportions, 0.05)))
    d.add(model_test("correctedModel", 6.84321, 2, DF))
    d.add(model_test("fixedEffect", 4.12876, 1, DF, 0))
    d.add(model_test("fixedEffect", 9.55762, 1, DF, 1))
    d.add(first_subject(1, ["events", "trials"]))
    d.add(random_covariances(0, ["G0.0"], [[0.412345]]))
    d.add(classification([], [[9, 3], [3, 9]]))
    t = X("TrainingSummary")
    fixed = t.add(X("ParameterEstimates", [("parameterType", "fixed")]))
    fixed.add(fixed_stats("B0", "Intercept", b0, -0.853210, 0.311452, DF))
    fixed.add(fixed_stats("B1", "[treatment=A]", b1, 0.642180, 0.316041, DF, effect_index=0))
    fixed.add(fixed_stats("B2", "[treatment=B]", b2, 0.0, 1.0, DF, effect_index=0, redundant=True))
    fixed.add(fixed_stats("B3", "dose", b3, 0.0281470, 0.00910431, DF, effect_index=1))
    rep = t.add(X("ParameterEstimates", [("parameterType", "repeated")]))
    rep.add(cov_stats("Residual", "Variance", "Variance ", [], 1.0, None, fixed=True))
    rnd = t.add(X("ParameterEstimates", [("parameterType", "random"), ("block", "0")]))
    rnd.add(cov_stats("Variance", "Var(Intercept)", "VarOfEffect", [0], 0.412345, 0.228761))
    t.add(message("kGLMM_C23"))
    t.add(message("kGLMM_C10"))
    write("binomial.statxml.xml", statxml(settings, [fixed_map([("B0", b0), ("B1", b1), ("B2", b2), ("B3", b3)]),
                                                     string_map(1, [("G0.0", g0)])], d, t))


def write_poisson():
    fields = [field("count", "continuous", role="target"), field("treatment", "categorical", True, ["A", "B"]),
              field("dose", "continuous"), field("patient", "categorical", False, PATIENTS)]
    write("poisson.pmml.xml", pmml("count", fields))
    b0 = regression_parameter("B0", intercept=True)
    b1, b2 = treatment_params()
    b3 = regression_parameter("B3", covariates=["dose"])
    b4 = regression_parameter("B4", covariates=["dose"], factors=[("treatment", "A", False)])
    b5 = regression_parameter("B5", covariates=["dose"], factors=[("treatment", "B", False)])
    g0 = regression_parameter("G0.0", intercept=True)
    g1 = regression_parameter("G0.1", covariates=["dose"])
    settings = build_settings("count", "POISSON", "LOG", [["treatment"], ["dose"], ["treatment", "dose"]],
                              blocks=[{"effects": [["dose"]], "intercept": True, "subjects": ["patient"],
                                       "type": "UNSTRUCTURED"}],
                              requests=[{"factors": ["treatment"], "compare": "treatment", "contrast": "Pairwise"}])
    m2ll = 101.562
    aicc, bic = criteria(m2ll, 7, N)
    d = diagnostics_element(aicc, bic, m2ll, 1, 3, 6, 2, 6)
    d.add(statistic("grandMean", num(3.41275)))
    d.add(statistic("grandMeanStdErr", num(0.402513)))
    d.add(statistic("grandMeanCILower", num(2.57312)))
    d.add(statistic("grandMeanCIUpper", num(4.25238)))
    counts = [float(c) for c in column("count")]
    d.add(target_distribution(counts, 6, []))
    d.add(observed_by_predicted(counts, predicted_of(counts, 0.4)))
    d.add(model_test("correctedModel", 5.21743, 3, DF))
    d.add(model_test("fixedEffect", 2.87145, 1, DF, 0))
    d.add(model_test("fixedEffect", 11.0412, 1, DF, 1))
    d.add(model_test("fixedEffect", 0.974163, 1, DF, 2))
    d.add(first_subject(1, ["count"]))
    d.add(random_covariances(0, ["G0.0", "G0.1"], [[0.214532, -0.00641288, 0.000812451]]))
    # The component's own means of the treatment effect.
    for mean_a, mean_b in ((3.91824, 2.96132),):
        g = d.add(X("DataGroup", [("description", "Emmeans")]))
        g.add(statistic("effectIndex", "0"))
        mv = g.add(X("MultivariateData", [("description", "estimates")]))
        mv.add(X("CoordinatesGroup", [("description", "factors")],
                 [X("Coordinates", [("feature", "fields"), ("field", "treatment")], [array(["A", "B"], "string")])]))
        emmeans_columns(mv, [mean_a, mean_b], [0.581243, 0.497125])
    custom = d.add(X("DataGroup", [("description", "customEmmeans")]))
    custom.add(X("Label", children=[X("PrintableList", children=[
        X("PrintableList", [("pattern", "dose")], [X("PrintableList", [("pattern", "20")])])])]))
    custom.add(statistic("EMMEANSIndex", "0"))
    mv = custom.add(X("MultivariateData", [("description", "estimates")]))
    mv.add(X("CoordinatesGroup", [("description", "factors")],
             [X("Coordinates", [("feature", "fields"), ("field", "treatment")], [array(["A", "B"], "string")])]))
    emmeans_columns(mv, [3.91824, 2.96132], [0.581243, 0.497125])
    contrasts = custom.add(X("MultivariateData", [("description", "contrasts")]))
    contrasts.add(statistic("adjustedSigLevel", num(0.05)))
    contrasts.add(X("CoordinatesGroup", [("description", "pairwiseContrast")], [
        X("Coordinates", [("feature", "fields"), ("field", "treatment")], [array(["A"], "string")]),
        X("Coordinates", [("feature", "fields"), ("field", "treatment")], [array(["B"], "string")])]))
    estimate, se = 3.91824 - 2.96132, 0.764869
    tq = t_quantile(0.975, DF)
    tt = estimate / se
    sig = 2.0 * (1.0 - t_cdf(abs(tt), DF))
    for name, value in (("contrastEstimate", estimate), ("stdErr", se), ("tTest", tt), ("df", DF),
                        ("adjustedSig", sig), ("confIntervalLower", estimate - tq * se),
                        ("confIntervalUpper", estimate + tq * se)):
        contrasts.add(X("Coordinates", [("feature", "statistic"), ("statistic", name)], [array([value])]))
    overall = custom.add(X("ModelTestStats", [("testID", "0")]))
    overall.add(X("SegmentInfo"))
    overall.add(f_test(tt * tt, 1, DF))
    t = X("TrainingSummary")
    fixed = t.add(X("ParameterEstimates", [("parameterType", "fixed")]))
    fixed.add(fixed_stats("B0", "Intercept", b0, 0.904312, 0.241873, DF))
    fixed.add(fixed_stats("B1", "[treatment=A]", b1, 0.312571, 0.184462, DF, effect_index=0))
    fixed.add(fixed_stats("B2", "[treatment=B]", b2, 0.0, 1.0, DF, effect_index=0, redundant=True))
    fixed.add(fixed_stats("B3", "dose", b3, 0.0217741, 0.00655302, DF, effect_index=1))
    fixed.add(fixed_stats("B4", "dose*[treatment=A]", b4, -0.00814127, 0.00824851, DF, effect_index=2))
    fixed.add(fixed_stats("B5", "dose*[treatment=B]", b5, 0.0, 1.0, DF, effect_index=2, redundant=True))
    rep = t.add(X("ParameterEstimates", [("parameterType", "repeated")]))
    rep.add(cov_stats("Residual", "Variance", "Variance ", [], 1.0, None, fixed=True))
    rnd = t.add(X("ParameterEstimates", [("parameterType", "random"), ("block", "0")]))
    rnd.add(cov_stats("UN(1,1)", "UN(1,1)", "UN(^1,^2)", [1, 1], 0.214532, 0.118244))
    rnd.add(cov_stats("UN(2,1)", "UN(2,1)", "UN(^1,^2)", [2, 1], -0.00641288, 0.00411562, variance=False))
    rnd.add(cov_stats("UN(2,2)", "UN(2,2)", "UN(^1,^2)", [2, 2], 0.000812451, 0.000614277))
    t.add(message("kGLMM_C18"))
    t.add(message("kGLMM_C28"))
    write("poisson.statxml.xml",
          statxml(settings, [fixed_map([("B0", b0), ("B1", b1), ("B2", b2), ("B3", b3), ("B4", b4), ("B5", b5)]),
                             string_map(1, [("G0.0", g0), ("G0.1", g1)])], d, t))


def emmeans_columns(mv, means, ses):
    tq = t_quantile(0.975, DF)
    mv.add(X("Coordinates", [("feature", "statistic"), ("statistic", "mean")], [array(means)]))
    mv.add(X("Coordinates", [("feature", "statistic"), ("statistic", "stdErr")], [array(ses)]))
    mv.add(X("Coordinates", [("feature", "statistic"), ("statistic", "confIntervalLower")],
             [array([m - tq * s for m, s in zip(means, ses)])]))
    mv.add(X("Coordinates", [("feature", "statistic"), ("statistic", "confIntervalUpper")],
             [array([m + tq * s for m, s in zip(means, ses)])]))


def moments(values):
    """The mean and the variance (n - 1 denominator)."""
    mean = sum(values) / len(values)
    return mean, sum((v - mean) ** 2 for v in values) / (len(values) - 1)


def cost_on_dose(name):
    """Writes the model file of cost on dose, with the patients; gives the
    intercept and the slope."""
    fields = [field("cost", "continuous", role="target"), field("dose", "continuous"),
              field("patient", "categorical", False, PATIENTS)]
    write(name + ".pmml.xml", pmml("cost", fields))
    return regression_parameter("B0", intercept=True), regression_parameter("B1", covariates=["dose"])


def write_gamma():
    b0, b1 = cost_on_dose("gamma")
    g0 = regression_parameter("G0.0", intercept=True)
    settings = build_settings("cost", "GAMMA", "POWER", [["dose"]], link_param=-1.0,
                              blocks=[{"effects": [], "intercept": True, "subjects": ["patient"], "type": "VC"}],
                              ci=0.9)
    m2ll = 231.907
    aicc, bic = criteria(m2ll, 4, N)
    d = diagnostics_element(aicc, bic, m2ll, 1, 1, 2, 1, 6)
    costs = column("cost")
    mean, var = moments(costs)
    shape = mean * mean / var
    d.add(target_distribution(costs, 6, [("shape", shape), ("rate", shape / mean)]))
    d.add(observed_by_predicted(costs, predicted_of(costs, 25.0)))
    d.add(model_test("correctedModel", 14.2231, 1, DF))
    d.add(model_test("fixedEffect", 14.2231, 1, DF, 0))
    d.add(first_subject(1, ["cost"]))
    d.add(random_covariances(0, ["G0.0"], [[0.0]]))
    t = X("TrainingSummary")
    fixed = t.add(X("ParameterEstimates", [("parameterType", "fixed")]))
    fixed.add(fixed_stats("B0", "Intercept", b0, 0.00601234, 0.000412571, DF, with_exp=False, ci=0.9))
    fixed.add(fixed_stats("B1", "dose", b1, -0.0000412345, 0.0000109337, DF, effect_index=0, with_exp=False, ci=0.9))
    rep = t.add(X("ParameterEstimates", [("parameterType", "repeated")]))
    rep.add(cov_stats("Residual", "Variance", "Variance ", [], 0.0214561, 0.00654718, ci=0.9))
    rnd = t.add(X("ParameterEstimates", [("parameterType", "random"), ("block", "0")]))
    rnd.add(cov_stats("Variance", "Var(Intercept)", "VarOfEffect", [0], 0.0, None, fixed=True))
    t.add(message("kGLMM_C8"))
    t.add(message("kGLMM_C13"))
    write("gamma.statxml.xml", statxml(settings, [fixed_map([("B0", b0), ("B1", b1)]), string_map(1, [("G0.0", g0)])],
                                       d, t))


def write_negbin():
    fields = [field("count", "continuous", role="target"), field("treatment", "categorical", True, ["A", "B"]),
              field("patient", "categorical", False, PATIENTS)]
    write("negbin.pmml.xml", pmml("count", fields))
    b0 = regression_parameter("B0", intercept=True)
    b1, b2 = treatment_params()
    g0 = regression_parameter("G0.0", intercept=True)
    settings = build_settings("count", "NEGBIN", "LOG", [["treatment"]],
                              blocks=[{"effects": [], "intercept": True, "subjects": ["patient"], "type": "VC"}])
    m2ll = 99.8127
    aicc, bic = criteria(m2ll, 3, N)
    d = diagnostics_element(aicc, bic, m2ll, 1, 1, 3, 1, 6)
    counts = [float(c) for c in column("count")]
    mean, var = moments(counts)
    p = mean / var
    d.add(target_distribution(counts, 6, [("r", mean * p / (1.0 - p)), ("p", p)]))
    d.add(observed_by_predicted(counts, predicted_of(counts, 0.6)))
    d.add(model_test("correctedModel", 1.98342, 1, DF))
    d.add(model_test("fixedEffect", 1.98342, 1, DF, 0))
    d.add(first_subject(1, ["count"]))
    d.add(random_covariances(0, ["G0.0"], [[0.0]]))
    t = X("TrainingSummary")
    fixed = t.add(X("ParameterEstimates", [("parameterType", "fixed")]))
    fixed.add(fixed_stats("B0", "Intercept", b0, 1.10234, 0.187451, DF))
    fixed.add(fixed_stats("B1", "[treatment=A]", b1, 0.351272, 0.249425, DF, effect_index=0))
    fixed.add(fixed_stats("B2", "[treatment=B]", b2, 0.0, 1.0, DF, effect_index=0, redundant=True))
    rep = t.add(X("ParameterEstimates", [("parameterType", "repeated")]))
    rep.add(cov_stats("Residual", "Variance", "Variance ", [], 1.0, None, fixed=True))
    rnd = t.add(X("ParameterEstimates", [("parameterType", "random"), ("block", "0")]))
    rnd.add(cov_stats("Variance", "Var(Intercept)", "VarOfEffect", [0], 0.0, None, fixed=True))
    t.add(message("kGLMM_C9"))
    t.add(message("kGLMM_C12"))
    t.add(message("kGLMM_C14"))
    write("negbin.statxml.xml", statxml(settings, [fixed_map([("B0", b0), ("B1", b1), ("B2", b2)]),
                                                   string_map(1, [("G0.0", g0)])], d, t))


def write_igauss():
    b0, b1 = cost_on_dose("igauss")
    settings = build_settings("cost", "IGAUSS", "LOG", [["dose"]])
    m2ll = 233.514
    aicc, bic = criteria(m2ll, 3, N)
    d = diagnostics_element(aicc, bic, m2ll, 1, 0, 2, 0, 1)
    costs = column("cost")
    mean, var = moments(costs)
    # The shape (lambda) of the inverse Gaussian by its moments.
    d.add(target_distribution(costs, 6, [("shape", mean ** 3 / var)]))
    d.add(observed_by_predicted(costs, predicted_of(costs, 30.0)))
    d.add(model_test("correctedModel", 9.61245, 1, DF))
    d.add(model_test("fixedEffect", 9.61245, 1, DF, 0))
    t = X("TrainingSummary")
    fixed = t.add(X("ParameterEstimates", [("parameterType", "fixed")]))
    fixed.add(fixed_stats("B0", "Intercept", b0, 5.21437, 0.0612513, DF))
    fixed.add(fixed_stats("B1", "dose", b1, 0.00731544, 0.00235954, DF, effect_index=0))
    rep = t.add(X("ParameterEstimates", [("parameterType", "repeated")]))
    rep.add(cov_stats("Residual", "Variance", "Variance ", [], 0.000114872, 0.0000339124))
    t.add(message("kGLMM_C26"))
    write("igauss.statxml.xml", statxml(settings, [fixed_map([("B0", b0), ("B1", b1)])], d, t))


def write_ordinal():
    fields = [field("severity", "ordinal", False, [1, 2, 3], role="target"),
              field("treatment", "categorical", True, ["A", "B"]), field("dose", "continuous"),
              field("patient", "categorical", False, PATIENTS)]
    write("ordinal.pmml.xml", pmml("severity", fields))
    th1 = regression_parameter("B0", factors=[("severity", 1, False)])
    th2 = regression_parameter("B1", factors=[("severity", 2, False)])
    b2 = regression_parameter("B2", factors=[("treatment", "A", False)])
    b3 = regression_parameter("B3", factors=[("treatment", "B", False)])
    b4 = regression_parameter("B4", covariates=["dose"])
    g0 = regression_parameter("G0.0", intercept=True)
    settings = build_settings("severity", "ORDINAL", "LOGIT", [["treatment"], ["dose"]],
                              blocks=[{"effects": [], "intercept": True, "subjects": ["patient"], "type": "VC"}])
    m2ll = 47.3128
    aicc, bic = criteria(m2ll, 5, N)
    table = [[5, 2, 1], [2, 4, 2], [1, 2, 5]]
    accuracy = sum(table[i][i] for i in range(3)) / float(N)
    d = diagnostics_element(aicc, bic, m2ll, 0, 1, 5, 1, 6, accuracy=accuracy)
    severity = [float(s) for s in column("severity")]
    d.add(target_distribution(severity, 3, []))
    d.add(model_test("correctedModel", 2.41286, 2, DF))
    d.add(model_test("fixedEffect", 1.12744, 1, DF, 0))
    d.add(model_test("fixedEffect", 3.61725, 1, DF, 1))
    d.add(first_subject(1, ["severity"]))
    d.add(random_covariances(0, ["G0.0"], [[0.518734]]))
    d.add(classification([1, 2, 3], table))
    t = X("TrainingSummary")
    fixed = t.add(X("ParameterEstimates", [("parameterType", "fixed")]))
    fixed.add(fixed_stats("B0", "[severity=1]", th1, -0.912245, 0.521143, DF))
    fixed.add(fixed_stats("B1", "[severity=2]", th2, 0.784521, 0.514882, DF))
    fixed.add(fixed_stats("B2", "[treatment=A]", b2, -0.563317, 0.530512, DF, effect_index=0))
    fixed.add(fixed_stats("B3", "[treatment=B]", b3, 0.0, 1.0, DF, effect_index=0, redundant=True))
    fixed.add(fixed_stats("B4", "dose", b4, 0.0341233, 0.0179415, DF, effect_index=1))
    rnd = t.add(X("ParameterEstimates", [("parameterType", "random"), ("block", "0")]))
    rnd.add(cov_stats("Variance", "Var(Intercept)", "VarOfEffect", [0], 0.518734, 0.402731))
    t.add(message("kGLMM_C10"))
    t.add(message("kGLMM_C15"))
    t.add(message("kGLMM_C16"))
    write("ordinal.statxml.xml",
          statxml(settings, [fixed_map([("B0", th1), ("B1", th2), ("B2", b2), ("B3", b3), ("B4", b4)]),
                             string_map(1, [("G0.0", g0)])], d, t))


def write_nominal():
    fields = [field("choice", "categorical", True, CHOICES, role="target"),
              field("treatment", "categorical", True, ["A", "B"]), field("dose", "continuous"),
              field("patient", "categorical", False, PATIENTS)]
    write("nominal.pmml.xml", pmml("choice", fields))
    b0 = regression_parameter("B0", intercept=True)
    b1, b2 = treatment_params()
    b3 = regression_parameter("B3", covariates=["dose"])
    g0 = regression_parameter("G0.0", intercept=True)
    settings = build_settings("choice", "NOMINAL", "LOGIT", [["treatment"], ["dose"]],
                              blocks=[{"effects": [], "intercept": True, "subjects": ["patient"], "type": "VC"}])
    m2ll = 50.1945
    aicc, bic = criteria(m2ll, 8, N)
    table = [[5, 2, 1], [2, 5, 1], [1, 2, 5]]
    accuracy = sum(table[i][i] for i in range(3)) / float(N)
    d = diagnostics_element(aicc, bic, m2ll, 0, 2, 8, 1, 6, accuracy=accuracy)
    codes = [float(CHOICES.index(c)) for c in column("choice")]
    d.add(target_distribution(codes, 3, []))
    d.add(model_test("correctedModel", 1.57419, 4, DF))
    d.add(model_test("fixedEffect", 0.842176, 2, DF, 0))
    d.add(model_test("fixedEffect", 2.34183, 2, DF, 1))
    d.add(first_subject(1, ["choice"]))
    d.add(random_covariances(0, ["G0.0"], [[0.301245], [0.224718]],
                             segments=([("choice", "home")], [("choice", "ward")])))
    d.add(classification(CHOICES, table))
    t = X("TrainingSummary")
    sets = {"home": (0.412533, 0.621245, 0.0213375), "ward": (-0.215541, 0.271034, 0.0118823)}
    for category in ("home", "ward"):
        intercept, treat, dose = sets[category]
        fixed = t.add(X("ParameterEstimates", [("parameterType", "fixed")]))
        fixed.add(segment_info([("choice", category)]))
        fixed.add(fixed_stats("B0", "Intercept", b0, intercept, 0.702215, DF))
        fixed.add(fixed_stats("B1", "[treatment=A]", b1, treat, 0.745121, DF, effect_index=0))
        fixed.add(fixed_stats("B2", "[treatment=B]", b2, 0.0, 1.0, DF, effect_index=0, redundant=True))
        fixed.add(fixed_stats("B3", "dose", b3, dose, 0.0241276, DF, effect_index=1))
    for category, variance, se in (("home", 0.301245, 0.281524), ("ward", 0.224718, 0.250931)):
        rnd = t.add(X("ParameterEstimates", [("parameterType", "random"), ("block", "0")]))
        rnd.add(segment_info([("choice", category)]))
        rnd.add(cov_stats("Variance", "Var(Intercept)", "VarOfEffect", [0], variance, se))
    t.add(message("kGLMM_C11"))
    t.add(message("kGLMM_C17"))
    t.add(message("kGLMM_C21"))
    write("nominal.statxml.xml", statxml(settings, [fixed_map([("B0", b0), ("B1", b1), ("B2", b2), ("B3", b3)]),
                                                    string_map(1, [("G0.0", g0)])], d, t))


def write_messages():
    """A normal model that produced no estimates, only messages: every
    message of the family, and a means request that could not be answered."""
    fields = [field("cost", "continuous", role="target"), field("treatment", "categorical", True, ["A", "B"])]
    write("messages.pmml.xml", pmml("cost", fields))
    settings = build_settings("cost", "NORMAL", "IDENTITY", [["treatment"]],
                              requests=[{"factors": ["treatment"], "compare": "treatment", "contrast": "Simple",
                                         "reference": "Value", "referenceValue": "B"}],
                              padjust="SEQSIDAK")
    b0 = regression_parameter("B0", intercept=True)
    d = diagnostics_element(None, None, None, 1, 0, 3, 0, 1)
    # Its tests could not be computed either: they stand without statistics.
    d.add(X("ModelTestStats", [("description", "correctedModel"), ("testType", "III")]))
    d.add(X("ModelTestStats", [("description", "fixedEffect"), ("testID", "0"), ("testType", "III")]))
    custom = d.add(X("DataGroup", [("description", "customEmmeans")]))
    custom.add(statistic("EMMEANSIndex", "0"))
    mv = custom.add(X("MultivariateData", [("description", "estimates")]))
    mv.add(X("CoordinatesGroup", [("description", "factors")],
             [X("Coordinates", [("feature", "fields"), ("field", "treatment")], [array(["A", "B"], "string")])]))
    for name in ("mean", "stdErr", "confIntervalLower", "confIntervalUpper"):
        mv.add(X("Coordinates", [("feature", "statistic"), ("statistic", name)], [array([None, None])]))
    custom.add(message("kGLMM_C19_1", ["treatment"]))
    custom.add(message("kGLMM_C20"))
    custom.add(message("kGLMM_C22"))
    custom.add(message("kGLMM_C25"))
    t = X("TrainingSummary")
    for k in range(8, 29):
        key = "kGLMM_C19_1" if k == 19 else "kGLMM_C%d" % k
        t.add(message(key, ["treatment"] if k == 19 else []))
    write("messages.statxml.xml", statxml(settings, [fixed_map([("B0", b0)])], d, t))


def write_all_fields():
    """A model file that describes every field of clinic.csv, for documents
    written by hand in the tests."""
    fields = [field("patient", "categorical", False, PATIENTS), field("visit", "ordinal", False, VISITS),
              field("treatment", "categorical", True, ["A", "B"]), field("dose", "continuous"),
              field("events", "continuous"), field("trials", "continuous"), field("count", "continuous"),
              field("cost", "continuous", role="target"), field("severity", "ordinal", False, [1, 2, 3]),
              field("choice", "categorical", True, CHOICES)]
    write("clinic.pmml.xml", pmml("cost", fields))


if __name__ == "__main__":
    write_data()
    write_all_fields()
    write_binomial()
    write_poisson()
    write_gamma()
    write_negbin()
    write_igauss()
    write_ordinal()
    write_nominal()
    write_messages()
