#pragma once

class BpProcedure;
class ZORV_Dataset;

// The host's side of the model viewer. After a GLMIXFIT command's procedure
// has run, each fitted model has handed its model file (PMML) and its
// StatXML document to the output repository, split by split. For each
// model, the host creates the viewer's plug-in, gives it the output, the
// data and the data's dictionary, delivers the two documents, asks for its
// output, and destroys it.
//
// The viewer's output follows the command's own output under a heading
// "Model Viewer"; on a split file each split's output stands within it
// under a heading of its own, titled by the split. A heading left empty is
// removed. The StatJSON documents are not delivered: the
// tables of predicted random effects are the run side's, and a table never
// appears twice.
class AppModelViewer {
 public:
  // Drives the plug-in for every model in the repository. The debug
  // switch display_output also shows the result model each plug-in read.
  static void Run(BpProcedure& procedure, ZORV_Dataset& data);
};
