#include "host/strings/ParserMessage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "host/data/ZORV_Session.h"
#include "host/strings/errtxn_.h"

namespace {

// Points the session's resources at the test tables for one test.
class SampleResources {
 public:
  SampleResources() : fSaved(ZORV_Session::Current().GetResourceDir()) {
    ZORV_Session::Current().SetResourceDir(std::string(GLMIX_TEST_DATA_DIR) + "/strings/resources");
  }
  ~SampleResources() { ZORV_Session::Current().SetResourceDir(fSaved); }

 private:
  std::string fSaved;
};

}  // namespace

TEST(ParserMessage, TranslatesAndPlacesArgumentsInTheTranslationsOrder) {
  SampleResources resources;
  ParserMessage message;
  message.SetCommandName("GLMIXFIT");
  message.SetProcedureTitle("Sample");
  EXPECT_EQ(message.GetCommandName(), "GLMIXFIT");
  EXPECT_EQ(message.GetTranslatedText("Value ^1 of ^2", "3", "x"), "x has the value 3");
  EXPECT_EQ(message.GetTranslatedText("Hello"), "Bonjour");
}

TEST(ParserMessage, AbsentArgumentsKeepTheirMarkers) {
  SampleResources resources;
  ParserMessage message;
  message.SetProcedureTitle("Sample");
  EXPECT_EQ(message.GetTranslatedText("Value ^1 of ^2", nullptr, "x"), "x has the value ^1");
  EXPECT_EQ(message.GetTranslatedText("Value ^1 of ^2", "3"), "^2 has the value 3");
  EXPECT_EQ(message.GetTranslatedText(nullptr), "");
  EXPECT_EQ(message.GetTranslatedText("Unknown key ^1", "a"), "Unknown key a");
}

TEST(ParserMessage, UsesTheViewerTableOfTheProgram) {
  ParserMessage message;
  message.SetProcedureTitle("Generalized Linear Mixed Models");
  EXPECT_EQ(message.GetTranslatedText("Intercept"), "Intercept");
  EXPECT_EQ(message.GetTranslatedText("VarOfEffect", "Intercept"), "Var(Intercept)");
  EXPECT_EQ(message.GetTranslatedText("Power(^1)", "1.5"), "Power (1.5)");
}

TEST(errtxn_, FillsTheBufferWithTheHostMessage) {
  char buffer[256];
  long zero = 0;
  errtxn_(15903, buffer, 256, zero, zero, zero);
  EXPECT_EQ(buffer[255], '\0');
  EXPECT_EQ(std::strlen(buffer), 255u);
  EXPECT_EQ(std::string(buffer).substr(0, 16), "Predicted Value ");
  errtxn_(15902, buffer, 256, zero, zero, zero);
  EXPECT_EQ(std::string(buffer, 9), "Residual ");
}

TEST(errtxn_, CutsToTheBufferAndGivesTheNumberWhenUnknown) {
  char small[6];
  long zero = 0;
  errtxn_(15904, small, 6, zero, zero, zero);
  EXPECT_STREQ(small, "Fixed");
  char buffer[16];
  errtxn_(99999, buffer, 16, zero, zero, zero);
  EXPECT_EQ(std::string(buffer, 5), "99999");
}

TEST(errtxn_, EveryLabelOfASavedVariableHasAText) {
  char buffer[256];
  long zero = 0;
  for (long number = 15902; number <= 15911; ++number) {
    errtxn_(number, buffer, 256, zero, zero, zero);
    std::string text(buffer);
    text.erase(text.find_last_not_of(' ') + 1);
    EXPECT_NE(text, std::to_string(number));
    EXPECT_FALSE(text.empty());
  }
}
