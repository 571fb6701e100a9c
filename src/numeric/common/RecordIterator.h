#pragma once

namespace MCCommon_850 {

// Sequential access to the case records handed to the numeric engine.
// A record is an array of doubles (category codes and numeric values) laid
// out as the data adapter describes it; the pointer returned by Current()
// stays valid until the next call to Next() or Rewind().
class RecordIterator {
public:
    virtual ~RecordIterator() = default;
    virtual bool HasRecord() const = 0;
    virtual void Next() = 0;
    virtual int GetState() const = 0;
    virtual void Rewind() = 0;
    virtual const double* Current() const = 0;
};

} // namespace MCCommon_850
