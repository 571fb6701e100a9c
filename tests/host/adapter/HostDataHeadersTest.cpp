// Every header of the data access and file interfaces, together in one unit.
#include "host/adapter/ACACommonDisplay.h"
#include "host/adapter/ACADataFileIter.h"
#include "host/adapter/ACADatasetCaseIter.h"
#include "host/adapter/ACAInpAdaptMsg.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAStopProcessor.h"
#include "host/adapter/ACAVarListMetaData.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ObsVecMap.h"
#include "host/data/ZORV_InputCaseIterator.h"
#include "host/data/ZORV_PMMLPooling.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/files/AppParams.h"
#include "host/files/BEPesRepos.h"
#include "host/files/ExtNameStr.h"
#include "host/files/PathFactory.h"
#include "host/parser/ParserText.h"
#include "host/parser/ParserWords.h"
#include "host/text/NumericText.h"
#include "host/text/ZORVMBConverter.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(HostDataHeaders, IteratorsAreRecordIterators) {
  EXPECT_TRUE((std::is_base_of<MCCommon_850::RecordIterator, ACAProcDataSourceIter>::value));
  EXPECT_TRUE((std::is_base_of<MCCommon_850::RecordIterator, ACADataFileIter>::value));
  EXPECT_TRUE((std::is_base_of<MCCommon_850::MCQueryCancel, ACAStopProcessor>::value));
  EXPECT_TRUE(std::has_virtual_destructor<ACAInputAdapter>::value);
  EXPECT_TRUE(std::is_abstract<ZORV_InputCaseIterator>::value);
  EXPECT_TRUE((std::is_base_of<ZORV_InputCaseIterator, ACADatasetCaseIter>::value));
  EXPECT_TRUE(std::has_virtual_destructor<PathFactory>::value);
}
