#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/MIXCommandLayout.h"
#include "host/data/OBS.h"
#include "host/data/ZORV_Format.h"
#include "host/output/BpFormatSpec.h"

class ACAVarValidSpecs;
class BpPivotTable;
class BpProcedure;
class MIXParameterMap;
class MIXSplitResults;
class MIXValidSpecs;
class ProcedureDataSource;
namespace MCGLMM_850 {
class GLMMSettings;
}

// What the table writers of one split share: the run's objects, the
// parameter maps of the split, captions, and the rules that turn values into
// display text. MIXOutput makes a new one for every split it shows, since
// each split has parameters of its own.
class MIXComOutputData {
 public:
  MIXComOutputData(MIXValidSpecs* pValidSpecs, MIXSplitResults* pFactory, ProcedureDataSource& dataSource,
                   BpProcedure* pProcedure);
  ~MIXComOutputData();
  MIXComOutputData(const MIXComOutputData&) = delete;
  MIXComOutputData& operator=(const MIXComOutputData&) = delete;

  MIXValidSpecs* GetValidSpecs() const { return fpValidSpecs; }
  MIXSplitResults* GetFactory() const { return fpFactory; }
  BpProcedure* GetProcedure() const { return fpProcedure; }
  ProcedureDataSource* GetProcDS() const { return fpProcDS; }
  ACAVarValidSpecs* GetVarSpecs() const { return fpVarSpecs; }
  MCGLMM_850::GLMMSettings* GetCompSettings() const { return fpCompSettings; }

  MIXParameterMap* GetFixParamMap() const { return fpFixParamMap; }
  const std::vector<MIXParameterMap*>* GetRandParamMaps() const { return &fvpRandParamMaps; }

  // The parser's blocks as the host published them.
  static std::intptr_t GetCmnMixMap();
  static std::intptr_t GetCmaMixMap();

  // The number format of a format slot of the numeric block: the
  // information criteria's, or the estimates' and covariance matrix's.
  // Widths above 40 become 40, except for string types; a type 1 format
  // carries its decimals in the width's high byte.
  static ZORV_Format GetTableFormat(MIXCommandLayout::Slot<MIXCommandLayout::FORMAT> slot);
  // The format of degrees of freedom: the count format when they are whole,
  // else the general one.
  static BpFormatSpec DFFormat(double df);

  // Fills the fixed parameter map from the current split's fit.
  void GenerateMaps();

  // The host's display setting for variables (`forValues` false) or values,
  // in captions (`second`) or in tables, less 1: 0 or less names or values
  // alone, 1 labels alone, 2 or more both.
  static int GlobalDisplayOption(bool forValues, bool second);

  void AddTableCaptionFromPattern(BpPivotTable& table, const std::string& pattern, bool listEffects) const;
  void AddTableCaption(BpPivotTable& table, bool listEffects) const;

  // A value as text: "." for the system-missing value, 17 significant
  // digits without a format.
  static std::string EncodeDouble(double value, const ZORV_Format* pFormat);

  // "A = 1, B = 2" for the split variables and the given values; empty for
  // an unsplit file. `second` takes the caption settings.
  std::string GetSplitName(const std::vector<OBS*>& values, bool second) const;

 private:
  bool HasEffects() const;

  BpProcedure* fpProcedure;
  MIXSplitResults* fpFactory;
  MIXValidSpecs* fpValidSpecs;
  ACAVarValidSpecs* fpVarSpecs;
  MCGLMM_850::GLMMSettings* fpCompSettings;
  ProcedureDataSource* fpProcDS;
  MIXParameterMap* fpFixParamMap;
  std::vector<MIXParameterMap*> fvpRandParamMaps;
};
