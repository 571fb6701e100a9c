#include "host/strings/errtxn_.h"

#include <cstring>
#include <string>

#include "host/strings/FacSTDictionary.h"

void errtxn_(const long& number, char* buffer, const long& length, const long& /*unused1*/,
             const long& /*unused2*/, const long& /*unused3*/) {
  if (buffer == nullptr || length <= 0) return;
  FacSTDictionary dictionary(FacSTDictionary::SessionDirectory());
  dictionary.SetProcedure("Host Messages");
  std::string text = dictionary.LookUp(std::to_string(number));
  std::size_t room = static_cast<std::size_t>(length - 1);
  if (text.size() > room) text.resize(room);
  std::memcpy(buffer, text.data(), text.size());
  std::memset(buffer + text.size(), ' ', room - text.size());
  buffer[room] = '\0';
}
