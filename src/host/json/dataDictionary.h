#pragma once

// The dictionary a table builder of JSON tables consults for what the
// document does not say itself. The procedure only makes an empty one and
// passes it on, so it holds nothing yet.
class dataDictionary {
 public:
  dataDictionary() = default;
};
