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
// On an unsplit file the viewer's output follows the command's own output
// under the command's heading. On a split file each split's output stands
// under a heading of its own, titled by the split; a heading the plug-in
// leaves empty is removed. The StatJSON documents are not delivered: the
// tables of predicted random effects are the run side's, and a table never
// appears twice.
class AppModelViewer {
 public:
  // Drives the plug-in for every model in the repository. The debug
  // switch display_output also shows the result model each plug-in read.
  static void Run(BpProcedure& procedure, ZORV_Dataset& data);
};
