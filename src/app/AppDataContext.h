#pragma once

#include <string>
#include <vector>

class ZORV_Dataset;

// What the data commands work on: the active data, the folders their file
// names are taken from and go to, and the files they must never write.
struct AppDataContext {
  ZORV_Dataset* fpData = nullptr;  // null before the first LOAD
  std::string fBaseDir;            // relative file names are taken from here ("" the working folder)
  std::string fOutputDir;          // files the program names go here ("" the working folder)
  // The command file and every file loaded so far, data and dictionaries.
  std::vector<std::string> fvReadFiles;
  // WRITE commands that named no file, so far: each gets a number of its own.
  int fUnnamedWrites = 0;
};
