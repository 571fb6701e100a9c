#include "run/MixDriver.h"

#include <optional>

#include "base/MixExports.h"
#include "host/adapter/ACAInpAdaptMsg.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/data/ProcedureDataSource.h"
#include "host/files/BEPesRepos.h"
#include "output/MIXOutput.h"
#include "run/MIXFactory.h"
#include "run/MIXRunTrace.h"
#include "specs/MIXValidSpecs.h"

namespace {

// The run's three objects. They live in automatic storage for the length of
// the call and are destroyed in the order factory, output, specification,
// whether the run ends normally or an exception passes through.
class RunObjects {
 public:
  RunObjects() = default;
  RunObjects(const RunObjects&) = delete;
  RunObjects& operator=(const RunObjects&) = delete;
  ~RunObjects() {
    if (fFactory) {
      fFactory.reset();
      MIXRunTrace::Note("~MIXFactory");
    }
    if (fOutput) {
      fOutput.reset();
      MIXRunTrace::Note("~MIXOutput");
    }
    if (fSpecs) {
      fSpecs.reset();
      MIXRunTrace::Note("~MIXValidSpecs");
    }
  }

  std::optional<MIXValidSpecs> fSpecs;
  std::optional<MIXOutput> fOutput;
  std::optional<MIXFactory> fFactory;
};

MixHostPass gHostPass = nullptr;

// The host's fatal state, asked afresh at every step.
class FatalQuery {
 public:
  explicit FatalQuery(const ProcedureDataSource& dataSource) : fpDataSource(&dataSource) {}
  bool operator()() const { return fpDataSource->FatalError(); }

 private:
  const ProcedureDataSource* fpDataSource;
};

}  // namespace

void MixSetHostPass(MixHostPass pass) { gHostPass = pass; }

void MixDriver(void* commandTree, BpProcedure& procedure, ProcedureDataSource& dataSource) {
  const FatalQuery isFatal(dataSource);
  RunObjects objects;

  // Specification.
  MIXValidSpecs& specs = objects.fSpecs.emplace(commandTree, dataSource);
  MIXRunTrace::Note("MIXValidSpecs");
  bool valid = true;
  if (!isFatal()) {
    MIXRunTrace::Note("SetMixedSpecs", specs.SetMixedSpecs());
    specs.CompleteSpecs();
    MIXRunTrace::Note("CompleteSpecs");
    valid = specs.GetCompSettingsPtr() != nullptr;
  }
  MIXOutput& output = objects.fOutput.emplace(&specs, dataSource, &procedure, nullptr);
  MIXRunTrace::Note("MIXOutput");
  if (!valid || isFatal()) return;

  // Opening.
  BEPesRepos::BEPesClear();
  MIXRunTrace::Note("BEPesClear");
  const int nColumns = dataSource.ColumnCount();
  if (nColumns == 0) {
    ACAInpAdaptMsg(dataSource).NoValidCasesForSelect();
    MIXRunTrace::Note("NoValidCasesForSelect");
  }
  MIXFactory& factory = objects.fFactory.emplace(&specs, dataSource, &procedure);
  MIXRunTrace::Note("MIXFactory");
  output.SetFactory(&factory);
  output.AddToNotesTable();
  MIXRunTrace::Note("AddToNotesTable");
  const bool splitFile = factory.GetInputAdapter()->GetSplitFile();

  // Data pass: count and check the records, and build each split's settings.
  bool ok = true;
  bool reachedEnd = false;
  for (;;) {
    if (isFatal()) {
      reachedEnd = ok;
      break;
    }
    if (!ok) break;
    const bool started = factory.StartNewSplit(true);
    MIXRunTrace::Note("StartNewSplit", started);
    if (!started) {
      reachedEnd = true;
      break;
    }
    bool pass = ok;
    if (!isFatal()) {
      pass = factory.ProcedureDataPass(true);
      MIXRunTrace::Note("ProcedureDataPass", pass);
    }
    // A split file goes on whatever one split's passes said.
    if (splitFile) pass = ok;
    if (!isFatal() && pass) {
      pass = factory.CompleteMetaData();
      MIXRunTrace::Note("CompleteMetaData", pass);
    }
    if (!splitFile) ok = pass;
  }
  if (reachedEnd) {
    if (display_settings) {
      specs.Display();
      MIXRunTrace::Note("Display");
    }
    ok = true;
  }

  // Aggregators and the component pass.
  if (!isFatal() && ok) {
    ok = factory.CreateParamAggregators();
    MIXRunTrace::Note("CreateParamAggregators", ok);
  }
  bool componentPass = true;
  if (!isFatal()) {
    if (!ok) {
      componentPass = false;
    } else {
      ok = factory.PrepareComponentRun(true);
      MIXRunTrace::Note("PrepareComponentRun", ok);
    }
  }
  if (componentPass && ok) {
    for (;;) {
      if (isFatal()) break;
      const bool started = factory.StartNewSplit(true);
      MIXRunTrace::Note("StartNewSplit", started);
      if (!started) break;
      // The result is dropped: a failed fit has said so, and only the host's
      // fatal state stops the run.
      if (!isFatal()) MIXRunTrace::Note("RunGLMMComponent", factory.RunGLMMComponent());
    }
  }

  // Aggregation and the output pass.
  if (!isFatal() && ok) {
    ok = factory.AggregateParameters();
    MIXRunTrace::Note("AggregateParameters", ok);
  }
  bool more = false;
  if (isFatal() || !ok) {
    more = false;
  } else if (!splitFile) {
    more = true;
  } else {
    ok = factory.PrepareComponentRun(true);
    MIXRunTrace::Note("PrepareComponentRun", ok);
    if (ok) {
      more = factory.StartNewSplit(true);
      MIXRunTrace::Note("StartNewSplit", more);
    }
  }
  while (!isFatal() && ok && more) {
    bool pass = ok;
    if (splitFile) {
      pass = factory.ProcedureDataPass(false);
      MIXRunTrace::Note("ProcedureDataPass", pass);
    }
    const bool show = !isFatal() && pass;
    if (show && !isFatal()) {
      output.DisplayOutput();
      MIXRunTrace::Note("DisplayOutput");
    }
    factory.ClearSplitHistory();
    if (splitFile) {
      more = factory.StartNewSplit(true);
      MIXRunTrace::Note("StartNewSplit", more);
    } else {
      more = false;
      ok = pass;
    }
  }

  if (gHostPass != nullptr && !isFatal() && ok) {
    gHostPass(factory);
    MIXRunTrace::Note("HostPass");
  }

  // Close.
  BEPesRepos::BEPesCheckError();
  MIXRunTrace::Note("BEPesCheckError");
  output.CompleteNotesTable();
  MIXRunTrace::Note("CompleteNotesTable");
}
