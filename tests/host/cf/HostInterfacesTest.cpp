// Every header of the plug-in, document, JSON and chart interfaces, in one
// translation unit: they must compile together.
#include "host/cf/CFField.h"
#include "host/cf/CFFormat.h"
#include "host/cf/CFMetaData.h"
#include "host/cf/CFProcCustom.h"
#include "host/cf/CFStatVariableValue.h"
#include "host/cf/CFStatXMLInfoBlock.h"
#include "host/documents/SDOMXMLIterator.h"
#include "host/documents/SDOMXMLWrapper.h"
#include "host/json/JNIJSONArray.h"
#include "host/json/JNIJSONArtifact.h"
#include "host/json/JNIJSONObject.h"
#include "host/json/dataDictionary.h"
#include "host/json/jsonPivot.h"
#include "host/viz/ChartString.h"
#include "host/viz/FetchFile.h"
#include "host/viz/JNIException.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/ViZEditor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XUtility.h"
#include "host/viz/XVariable.h"
#include "host/viz/XViZTemplate.h"
#include "host/viz/ZorvJVM.h"

#include "host/data/ZORV_Variable.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(HostInterfaces, CompileTogetherAndKeepTheirShapes) {
  static_assert(std::is_abstract<CFProcCustom>::value, "the plug-in base is abstract");
  static_assert(std::has_virtual_destructor<CFProcCustom>::value, "the host deletes plug-ins through the base");
  static_assert(std::has_virtual_destructor<CFFormat>::value, "formats are cloned and deleted through the base");
  static_assert(std::is_base_of<std::runtime_error, JNIException>::value, "a virtual machine failure");
  static_assert(!std::is_copy_constructible<SDOMXMLWrapper>::value, "a wrapper owns what it hands out");
  static_assert(!std::is_copy_constructible<JNIJSONObject>::value, "a document owns its values");
  static_assert(std::is_default_constructible<dataDictionary>::value, "made empty and passed on");
  static_assert(std::is_default_constructible<JNIJSONArray>::value, "made empty and asked about arrays");

  // One road through the plain parts: a document read, its text given to a
  // chart string, a JSON value put, a value coded for a variable.
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString("<a label=\"caf&#233;\"/>"));
  std::string label;
  ASSERT_TRUE(doc.GetAttribute("label", label));
  ChartString chartLabel = XUtility::ChartStringFromLocalCodePage(label);
  EXPECT_EQ(chartLabel.str(), u"caf\u00e9");
  JNIJSONObject json;
  JNIJSONObject::putString(json.getTop(), "label", chartLabel.toUTF8());
  EXPECT_EQ(json.toString(), "{\"label\":\"caf\xc3\xa9\"}");
  CFStatVariableValue value(label);
  EXPECT_TRUE(value.LoadObsValue(ZORV_Variable("v", 8), 0));
}
