#pragma once

#include <string>
#include <vector>

class ACAInputAdapter;
class ACAVarValidSpecs;
class MIXValidSpecs;
class ProcedureDataSource;
namespace MCMath_850 {
class MCModelEffect;
class MCRegrParameter;
}  // namespace MCMath_850

// The labels of the parameters and effects of one fitted model, in the
// order of the component's lists. There is one map for the fixed part of a
// split and one per random block. Each list exists twice: plain, and with
// the suffix of the block's subject variables.
//
// The lists are made once: a second CreateParameterMap or CreateEffectMap
// leaves them as they are. Category values are decoded in the adapter's
// current split, which must be the split of the parameters.
class MIXParameterMap {
 public:
  MIXParameterMap(const MIXValidSpecs* pSpecs, ProcedureDataSource& dataSource, const ACAInputAdapter* pInpAdapt);
  MIXParameterMap(const MIXParameterMap&) = delete;
  MIXParameterMap& operator=(const MIXParameterMap&) = delete;

  // Fills the four parameter lists; `subjectVars` are component indices.
  void CreateParameterMap(const std::vector<MCMath_850::MCRegrParameter>& params,
                          const std::vector<MCMath_850::MCModelEffect>& effects, const std::vector<int>& subjectVars);
  void CreateParameterMap(const std::vector<MCMath_850::MCRegrParameter>& params,
                          const std::vector<MCMath_850::MCModelEffect>& effects);
  // Fills the two effect lists.
  void CreateEffectMap(const std::vector<MCMath_850::MCModelEffect>& effects, const std::vector<int>& subjectVars);
  void CreateEffectMap(const std::vector<MCMath_850::MCModelEffect>& effects);

  // One label per parameter.
  const std::vector<std::string>& GetParameterMap(bool withSubject) const;
  // Per effect, the labels of its parameters.
  const std::vector<std::vector<std::string>>& GetParamMapsEff(bool withSubject) const;
  // One label per effect.
  const std::vector<std::string>& GetEffectMap(bool withSubject) const;
  int GetParamMapSize() const { return static_cast<int>(fParamList.size()); }
  int GetEffectMapSize() const { return static_cast<int>(fEffectList.size()); }

  // The names of the subject variables (component indices) joined with
  // " * "; empty for an empty list.
  std::string GetCombSubjString(const std::vector<int>& subjectVars) const;

  const MIXValidSpecs* GetValidSpecs() const { return fpSpecs; }
  const ACAInputAdapter* GetInputAdapter() const { return fpInpAdapt; }

 private:
  std::string EffectLabel(const MCMath_850::MCModelEffect& effect) const;
  std::string ParamLabel(const MCMath_850::MCRegrParameter& param, const MCMath_850::MCModelEffect& effect) const;
  std::string VarName(int compIndex) const;

  ProcedureDataSource* fpDataSource;
  const MIXValidSpecs* fpSpecs;
  const ACAVarValidSpecs* fpVarValidSpecs;
  const ACAInputAdapter* fpInpAdapt;
  std::vector<std::string> fParamList;
  std::vector<std::string> fParamListSubj;
  std::vector<std::vector<std::string>> fParamListEff;
  std::vector<std::vector<std::string>> fParamListSubjEff;
  std::vector<std::string> fEffectList;
  std::vector<std::string> fEffectListSubj;
};
