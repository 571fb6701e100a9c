#include "host/io/DataFileLoader.h"

#include <fstream>

#include "host/data/ZORV_Dataset.h"
#include "host/io/CsvReader.h"
#include "host/io/DataDictionary.h"
#include "host/io/StatFileReader.h"

std::string DataFileLoader::DictionaryPathFor(const std::string& path) {
  std::size_t slash = path.find_last_of("/\\");
  std::size_t dot = path.find_last_of('.');
  std::string stem = (dot == std::string::npos || (slash != std::string::npos && dot < slash) ||
                      dot == (slash == std::string::npos ? 0 : slash + 1))
                         ? path
                         : path.substr(0, dot);
  return stem + ".dictionary.json";
}

void DataFileLoader::Load(const std::string& path, ZORV_Dataset& dataset) {
  std::string dictionary = DictionaryPathFor(path);
  std::ifstream probe(dictionary);
  Load(path, probe ? dictionary : std::string(), dataset);
}

void DataFileLoader::Load(const std::string& path, const std::string& dictionaryPath, ZORV_Dataset& dataset) {
  DataDictionary dictionary;
  bool haveDictionary = !dictionaryPath.empty();
  if (haveDictionary) dictionary.Load(dictionaryPath);

  StatFileReader::Kind kind = StatFileReader::DTA;
  bool typed = StatFileReader::KindFromPath(path, kind);
  if (typed) {
    StatFileReader().Read(path, kind, dataset);
  } else {
    CsvReader reader;
    if (haveDictionary) reader.SetDictionary(&dictionary);
    reader.Read(path, dataset);
  }
  if (haveDictionary) dictionary.Apply(dataset, typed, path);
}
