#include "FuzzData.h"

#include "host/data/ZORV_Dataset.h"
#include "host/io/CsvReader.h"

namespace fuzzdata {

const char* CsvText() {
  return "y,x,z,w,a,b,s,t,name\n"
         "10.5,1,0.5,1,a1,1,S1,1,Ann\n"
         "11.0,2,0.7,2,a2,2,S1,2,Bob\n"
         "12.5,3,0.2,1,a3,1,S1,3,Cid\n"
         "9.0,1,0.9,1,a1,2,S2,1,Dan\n"
         "9.5,2,0.4,2,a2,1,S2,2,Eve\n"
         "13.0,3,0.6,1,a3,2,S2,3,Fay\n"
         "8.5,1,0.3,1,a1,1,S3,1,Gus\n"
         "10.0,2,,2,a2,2,S3,2,Hal\n"
         "14.5,3,0.8,1,a3,1,S3,3,Ida\n"
         "11.5,1,0.1,2,a1,2,S4,1,Jon\n"
         "12.0,2,0.5,1,a2,1,S4,2,Kim\n"
         "15.0,3,0.9,2,a3,2,S4,3,Lea\n";
}

const ZORV_Dataset& Dataset() {
  static const ZORV_Dataset* data = [] {
    ZORV_Dataset* made = new ZORV_Dataset();
    CsvReader().ReadText(CsvText(), "fuzz.csv", *made);
    return made;
  }();
  return *data;
}

}  // namespace fuzzdata
