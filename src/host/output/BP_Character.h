#pragma once

#include <string>

// The host's string for text sent to the front end.
class BP_Character {
 public:
  BP_Character() = default;
  BP_Character(const char* text) : fText(text ? text : "") {}
  BP_Character(const std::string& text) : fText(text) {}

  BP_Character& operator=(const char* text) {
    fText = text ? text : "";
    return *this;
  }
  BP_Character& operator+=(const char* text) {
    if (text) fText += text;
    return *this;
  }
  BP_Character& operator+=(const BP_Character& other) {
    fText += other.fText;
    return *this;
  }
  BP_Character& operator+=(const std::string& text) {
    fText += text;
    return *this;
  }

  const char* c_str() const { return fText.c_str(); }
  const std::string& GetString() const { return fText; }
  std::size_t size() const { return fText.size(); }
  bool empty() const { return fText.empty(); }

 private:
  std::string fText;
};
