#pragma once

#include <initializer_list>
#include <string>

#include "host/viz/ChartString.h"

class VarDataProcessor;
class XDocument;

// The steps every chart shares: declaring and filling its data, reading a
// template file, and sending the finished document.
namespace GNLMChartDocument {

// Declares a data source with its variables, in order.
void Declare(VarDataProcessor& proc, const std::string& source, std::initializer_list<const char*> names,
             long rowCount = 0);
void SetNumber(VarDataProcessor& proc, const std::string& source, const std::string& name, long row, double value);
void SetText(VarDataProcessor& proc, const std::string& source, const std::string& name, long row,
             const std::string& value);
// The value as a number when it reads as one, otherwise as its text; true
// for a number.
bool SetNumberOrText(VarDataProcessor& proc, const std::string& source, const std::string& name, long row,
                     const std::string& value);

// The text of a file of the template folder. A file that cannot be read
// gives the warning that a built-in template gives, and false.
bool FetchTemplate(const std::string& fileName, std::string& text);

// Opens a document for the chart editor in the output language.
void Open(XDocument& document);
// Gives the document its description and data, the session's look, and
// sends it.
void Send(XDocument& document, const ChartString& title, VarDataProcessor& proc);

}  // namespace GNLMChartDocument
