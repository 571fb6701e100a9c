#include "host/render/OmJsonRenderer.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/render/OmOutputFile.h"
#include "host/render/OmTableLayout.h"

namespace {

using Json = nlohmann::ordered_json;

Json TextJson(const OmText& text, const OmFootnoteMarkers& markers) {
  Json out = Json::object();
  out["text"] = text.fText;
  Json refs = Json::array();
  for (const std::string& marker : markers.MarkersOf(text)) refs.push_back(marker);
  out["footnotes"] = refs;
  return out;
}

const char* PlaceName(OmDimension::Place place) {
  switch (place) {
    case OmDimension::COLUMN:
      return "column";
    case OmDimension::LAYER:
      return "layer";
    case OmDimension::ROW:
      break;
  }
  return "row";
}

Json NodesJson(const OmDimensionNode& parent, const OmFootnoteMarkers& markers, int& leaf) {
  Json out = Json::array();
  for (const OmDimensionNode& node : parent.fvChildren) {
    Json item = Json::object();
    const bool category = node.IsCategory();
    item["kind"] = category ? "category" : "group";
    item["label"] = TextJson(node.fLabel, markers);
    item["showLabel"] = node.fbShowLabel;
    if (category) {
      item["index"] = leaf++;
    } else {
      item["children"] = NodesJson(node, markers, leaf);
    }
    out.push_back(item);
  }
  return out;
}

Json TableJson(const OmTable& table) {
  const OmTableLayout layout(table);
  const OmFootnoteMarkers& markers = layout.GetMarkers();
  Json out = Json::object();
  out["kind"] = "table";
  out["title"] = TextJson(table.fTitle, markers);
  out["subtype"] = table.fSubType;
  out["minDataColumnWidth"] = table.fMinDataColumnWidth;

  Json dims = Json::array();
  for (const OmDimension& dim : table.fvDimensions) {
    Json d = Json::object();
    d["place"] = PlaceName(dim.fPlace);
    d["name"] = TextJson(dim.fName, markers);
    d["showName"] = dim.fbShowName;
    d["order"] = dim.fOrder;
    d["showLabels"] = dim.fbShowLabels;
    int leaf = 0;
    d["children"] = NodesJson(dim.fRoot, markers, leaf);
    dims.push_back(d);
  }
  out["dimensions"] = dims;

  Json cells = Json::array();
  for (const auto& entry : table.fCells) {
    const OmCell& cell = entry.second;
    Json c = Json::object();
    c["coordinates"] = entry.first;
    c["text"] = cell.fContent.fText;
    if (cell.fbNumeric && !cell.fbMissing && std::isfinite(cell.fValue)) {
      c["value"] = cell.fValue;
    } else {
      c["value"] = nullptr;
    }
    c["numeric"] = cell.fbNumeric;
    c["missing"] = cell.fbMissing;
    c["format"] = cell.fFormat;
    Json refs = Json::array();
    for (const std::string& marker : markers.MarkersOf(cell.fContent)) refs.push_back(marker);
    c["footnotes"] = refs;
    cells.push_back(c);
  }
  out["cells"] = cells;

  Json captions = Json::array();
  for (const OmText& caption : table.fvCaptions) captions.push_back(TextJson(caption, markers));
  out["captions"] = captions;
  Json notes = Json::array();
  for (const OmText& note : table.fvNotes) notes.push_back(TextJson(note, markers));
  out["notes"] = notes;
  Json footnotes = Json::array();
  for (int index : markers.GetOrder()) {
    Json f = Json::object();
    f["marker"] = markers.GetMarker(index);
    f["text"] = table.fvFootnotes[static_cast<std::size_t>(index)];
    footnotes.push_back(f);
  }
  out["footnotes"] = footnotes;
  return out;
}

Json ChartJson(const OmChart& chart) {
  Json out = Json::object();
  out["kind"] = "chart";
  out["title"] = chart.fTitle;
  out["chartKind"] = chart.fKind;
  out["hidden"] = chart.fbHidden;
  if (chart.fMarkup.empty()) {
    out["markup"] = nullptr;
  } else {
    out["markup"] = chart.fMarkup;
  }
  Json sources = Json::array();
  for (const OmChartData::Source& source : chart.fData.fvSources) {
    Json s = Json::object();
    s["name"] = source.fName;
    s["rows"] = source.fRowCount;
    Json variables = Json::array();
    for (const OmChartData::Variable& variable : source.fvVariables) {
      Json v = Json::object();
      v["name"] = variable.fName;
      Json values = Json::array();
      for (long row = 0; row < source.fRowCount; ++row) {
        auto cell = variable.fCells.find(row);
        if (cell == variable.fCells.end() || (!cell->second.fbText && !std::isfinite(cell->second.fNumber))) {
          values.push_back(nullptr);
        } else if (cell->second.fbText) {
          values.push_back(cell->second.fText);
        } else {
          values.push_back(cell->second.fNumber);
        }
      }
      v["values"] = values;
      variables.push_back(v);
    }
    s["variables"] = variables;
    sources.push_back(s);
  }
  out["data"] = sources;
  return out;
}

Json ItemsJson(const OmHeading& heading) {
  Json items = Json::array();
  for (const OmItem& item : heading.fvItems) {
    Json j = Json::object();
    switch (item.fKind) {
      case OmItem::HEADING:
        if (!item.fpHeading) continue;
        j["kind"] = "heading";
        j["text"] = item.fpHeading->fText;
        j["items"] = ItemsJson(*item.fpHeading);
        break;
      case OmItem::TABLE:
        if (!item.fpTable) continue;
        j = TableJson(*item.fpTable);
        break;
      case OmItem::MESSAGE:
        if (!item.fpMessage) continue;
        j["kind"] = "message";
        j["level"] = OmMessage::LevelName(item.fpMessage->fLevel);
        j["text"] = item.fpMessage->fText;
        break;
      case OmItem::TEXT:
        if (!item.fpText) continue;
        j["kind"] = "text";
        j["lines"] = item.fpText->fvLines;
        break;
      case OmItem::CHART:
        if (!item.fpChart) continue;
        j = ChartJson(*item.fpChart);
        break;
    }
    items.push_back(j);
  }
  return items;
}

}  // namespace

std::string OmJsonRenderer::Render(const OmDocument& document) const {
  Json out = Json::object();
  out["format"] = "glmixfit-output";
  out["version"] = kSchemaVersion;
  out["title"] = document.fTitle;
  out["items"] = ItemsJson(document.fRoot);
  return out.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool OmJsonRenderer::WriteFile(const OmDocument& document, const std::string& path, std::string& error) const {
  return OmOutputFile::Write(path, Render(document), error);
}
