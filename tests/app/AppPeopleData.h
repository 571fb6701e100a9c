#pragma once

// Five people, for the tests of the data commands:
//   row  id  age  sex  score  grp  w
//   0    1   23   m    5.5    1    1
//   1    2   35   f    sys    2    2
//   2    3   47   f    7.25   1    1
//   3    4   sys  m    3      2    0
//   4    5   61   f    9      9    1
// 9 is a user-missing value of grp; sex has value labels.
namespace peopledata {

const char* const kCsv =
    "id,age,sex,score,grp,w\n"
    "1,23,m,5.5,1,1\n"
    "2,35,f,,2,2\n"
    "3,47,f,7.25,1,1\n"
    "4,,m,3,2,0\n"
    "5,61,f,9,9,1\n";

const char* const kDictionary =
    "{ \"variables\": {\n"
    "  \"grp\": { \"missing\": { \"values\": [9] }, \"level\": \"nominal\" },\n"
    "  \"sex\": { \"label\": \"Sex\", \"value_labels\": { \"m\": \"male\", \"f\": \"female\" } }\n"
    "} }\n";

const char* const kLoad = "LOAD 'people.csv'.\n";

}  // namespace peopledata
