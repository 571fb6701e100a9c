#pragma once

#include <vector>

namespace MCEngine_850 {

// Where the selected inverse's recursion reads Z(S, S) for the rows S below
// a supernode's columns. Each row of S is a column of a later supernode (an
// ancestor), and every later row of S lies on that column's pattern. S
// falls into runs of rows owned by one ancestor each; for a run, the
// positions of S's rows from the run's first on, within the ancestor's row
// list, come from one merge of the two ascending lists. With them the
// gather reads every entry at a known offset instead of searching the
// column for it, and the symbolic analysis being fixed for a fit, they are
// found once.
//
// The layout is the supernodal factor's: supernode k has the columns
// super[k] .. super[k + 1], the ascending row list s[pi[k] .. pi[k + 1])
// starting with its own columns, and its values column-major from px[k]
// with pi[k + 1] - pi[k] rows.
class MCEngineRelativeIndex {
 public:
  // False when a row below a supernode is missing from an ancestor's list
  // (never for a factorisation's own layout). The positions are kept when
  // they take at most maxKept entries, else found again at each gather.
  bool Build(int nsuper, const int* super, const int* pi, const int* px, const int* s, long maxKept);
  int GetNRowsBelow(int k) const { return fvBelowCount[static_cast<std::size_t>(k)]; }
  // The position in the factor's values of (S[t], S[b]), t >= b, for
  // supernode k's rows S below its columns.
  long Position(int k, int b, int t) const;
  // The lower triangle of values(S, S), column-major with ns rows.
  void Gather(int k, const double* values, double* zss) const;
  // The positions kept over all supernodes (0 when they are found again).
  long GetKept() const { return fbKept ? static_cast<long>(fvRelative.size()) : 0; }

 private:
  // Rows S[b0 .. b1) are columns of the ancestor; positions S[b0 ..] within
  // its row list start at fvRelative[fRelative0] when kept.
  struct Run {
    int fAncestor = 0;
    int fB0 = 0;
    int fB1 = 0;
    long fRelative0 = 0;
  };
  bool FindRuns(int k);
  // S[b0 ..]'s positions in the ancestor's row list, into out; false when
  // one is missing.
  bool Merge(int k, const Run& run, int* out) const;
  const int* Relative(int k, const Run& run) const;
  const int* Below(int k) const;

  std::vector<int> fvSuper;
  std::vector<int> fvPi;
  std::vector<int> fvPx;
  std::vector<int> fvS;
  bool fbKept = false;
  std::vector<int> fvColumnSuper;  // column -> its supernode
  std::vector<int> fvBelowCount;   // per supernode, |S|
  std::vector<long> fvRun0;        // per supernode, its first run
  std::vector<Run> fvRuns;
  std::vector<int> fvRelative;
  mutable std::vector<int> fvScratch;
};

}  // namespace MCEngine_850
