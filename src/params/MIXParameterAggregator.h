#pragma once

#include <string>
#include <vector>

#include "params/MIXRegrParameter.h"

class ACAInputAdapter;
class ACAVarValidSpecs;
class BpCellText;
class BpGroup;
class MIXValidSpecs;
class ObsVecMap;
class ProcedureDataSource;
namespace MCGLMM_850 {
class GLMMAlgorithm;
class GLMMSettings;
}  // namespace MCGLMM_850
namespace MCMath_850 {
class MCModelEffect;
class MCRegrParameter;
}  // namespace MCMath_850

// The common list of parameters over all splits of a run, for the fixed part
// (random index -1) or for one random block.
//
// The splits need not agree: a category may exist in one split and not in
// another, and the component then numbers its parameters differently. After
// each split's fit, AddSplitParams files every parameter under the category
// values it stands for, in one ObsVecMap per effect: within an effect, two
// parameters of two splits are the same parameter exactly when the bytes of
// their category values are equal. The cell of a parameter holds, behind
// its key, one word per split: the parameter's local index there, or -1.
//
// After the last split, CreateAggregationMaps builds the global list (the
// intercept, then the effects in the order of the command, within an effect in
// the order of the factor sort setting), the maps between each split's
// local indices and the global ones, and the labels. The categories of the
// global parameters point into the maps' cells, which live as long as the
// aggregator.
class MIXParameterAggregator {
 public:
  MIXParameterAggregator(const MIXValidSpecs& specs, const ACAInputAdapter* pInpAdapt,
                         const ProcedureDataSource& dataSource, int randomIndex, int nSplits);
  ~MIXParameterAggregator();
  MIXParameterAggregator(const MIXParameterAggregator&) = delete;
  MIXParameterAggregator& operator=(const MIXParameterAggregator&) = delete;

  // Takes the parameters of the split that the adapter has met last; call it
  // after the split's component run. False when the fit has no parameters to
  // give or a category cannot be decoded.
  bool AddSplitParams(const MCGLMM_850::GLMMAlgorithm* pAlgorithm);
  // Builds the global list, the maps and the labels; once, after the last
  // split.
  bool CreateAggregationMaps();

  const std::vector<MIXRegrParameter>& GetAllParameters() const { return fvAllRegrParams; }
  const std::vector<std::string>& GetAllParamLabels(bool withSubject) const;
  const std::vector<std::string>& GetAllEffectLabels(bool withSubject) const;
  // Per effect, the labels of its parameters.
  const std::vector<std::vector<std::string>>& GetAllParamLabelsEff(bool withSubject) const;
  // The global index of a split's local parameter; -1 when either index is
  // out of range or the split lacks the parameter.
  int GetGlobalParamIndex(int split, int local) const;
  // The local index of a global parameter in a split; -1 when either index
  // is out of range or the split lacks the parameter.
  int GetLocalParamIndex(int split, int global) const;

  // Declares the labels, in the global order, as categories of a pivot
  // group, so that the table knows every parameter before any split writes a
  // row: all parameters for a negative effect index, else those of that
  // effect. Only on a split file whose splits share their tables.
  void SetParamBagpipeCats(BpGroup* group, int effectIndex, bool withSubject) const;

  // A cell text for a label of any length: a plain string below 256 bytes,
  // else a composite of pieces of 255 bytes. The caller deletes the result.
  static BpCellText* LongStrToComposite(const std::string& text);

  int GetRandomIndex() const { return fRandomIndex; }
  int GetNSplits() const { return fNSplits; }
  bool GetGroupCats() const { return fbGroupCats; }
  bool GetParamAggregated() const { return fbParamAggregated; }

  void Display() const;

 private:
  const std::vector<MCMath_850::MCModelEffect>& EffectList() const;
  const std::vector<MCMath_850::MCModelEffect>& SettingsEffectList(const MCGLMM_850::GLMMSettings& settings) const;
  int CurrentSplitIndex() const;
  int KeyWords(const ObsVecMap& map) const;
  int FactorWords(int compIndex) const;
  bool GroupParamsByEffects(std::vector<std::vector<int>>& groups,
                            const std::vector<MCMath_850::MCRegrParameter>& params,
                            const MCGLMM_850::GLMMSettings& settings) const;
  bool AddParamsForEffect(const std::vector<MCMath_850::MCRegrParameter>& params, const std::vector<int>& paramIndices,
                          int effectIndex, const MCGLMM_850::GLMMSettings& settings);
  bool UpdateMapsForEffect(int effectIndex);
  void CreateParamLabels();
  void CreateEffectLabels();
  std::string GetCombSubjString() const;
  void ClearObsVecMaps();

  const MIXValidSpecs* fpSpecs;
  const ACAInputAdapter* fpInpAdapt;
  const ACAVarValidSpecs* fpVarValidSpecs;
  const ProcedureDataSource* fpDataSource;
  bool fbGroupCats;
  int fRandomIndex;
  int fNSplits;
  std::vector<MIXRegrParameter> fvAllRegrParams;
  std::vector<std::string> fvAllParamLabels;
  std::vector<std::vector<std::string>> fvParLabEff;
  std::vector<std::string> fvAllParLabSubj;
  std::vector<std::vector<std::string>> fvParLabSubjEff;
  std::vector<std::string> fvAllEffectLabels;
  std::vector<std::string> fvAllEffLabSubj;
  std::vector<std::vector<int>> fvGlobalToLocalMap;
  std::vector<std::vector<int>> fvLocalToGlobalMap;
  std::vector<ObsVecMap*> fvpObsVecMaps;
  bool fbParamAggregated;
};
