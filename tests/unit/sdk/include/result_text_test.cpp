// Every result code in words.
#include <gtest/gtest.h>
#include <qvr.h>

#include <cstdint>
#include <set>
#include <string>

namespace {

struct Words {
  QVR_retval_t result;
  const char* text;
};

constexpr Words kWords[] = {
    {QVR_E_STATUS_OK, "success"},
    {QVR_E_ERROR, "failed"},
    {QVR_E_TIMEOUT_ERROR, "timed out"},
    {QVR_E_REINIT_ALL_LINES, "all lines are to be initialised again"},
    {QVR_E_INVALID_LINE_ID, "invalid line id"},
    {QVR_E_REINIT_LINE, "line is to be initialised again"},
    {QVR_E_LINE_NOT_ACTIVE, "line not active"},
    {QVR_E_LINE_RESET_ERROR, "line reset failed"},
    {QVR_E_FAILED_GETTING_FE_DATA, "no valid data from the far end"},
    {QVR_E_INVALID_EVENT_FOR_LINK_STATE, "event not valid in this link state"},
    {QVR_E_DATA_NOT_AVAILABLE, "data not available"},
    {QVR_E_INVALID_OPERATION, "invalid operation"},
    {QVR_E_MEMREAD_ERROR, "reading chip memory failed"},
    {QVR_E_MEMWRITE_ERROR, "writing chip memory failed"},
    {QVR_E_IMAGE_ACTIVATE_ERROR, "starting the image failed"},
    {QVR_E_IMAGE_DOWNLOAD_ERROR, "downloading the image failed"},
    {QVR_E_ERASE_ERROR, "erasing flash failed"},
    {QVR_E_NO_DEVICE_FOR_LINE, "line without a device"},
    {QVR_E_DEVICE_NOT_EXISTS, "device not found"},
    {QVR_E_NOT_CURRENTLY_SUPPORTED, "not supported at present"},
    {QVR_E_FAILED_TO_OPEN_FILE, "opening the file failed"},
    {QVR_E_FAILED_CREATING_THREAD, "creating a thread failed"},
    {QVR_E_THREAD_FAILED, "thread failed"},
    {QVR_E_UNKNOWN_EVENT_TYPE, "unknown event type"},
    {QVR_E_UNDEFINED_FW_STATE, "undefined firmware state"},
    {QVR_E_INVALID_FW_STATE_B0, "wrong firmware state: ROM boot stage"},
    {QVR_E_INVALID_FW_STATE_FW, "wrong firmware state: firmware"},
    {QVR_E_FLASH_PROGRAM_ERROR, "programming flash failed"},
    {QVR_E_FAILED_TO_OPEN_IMAGE_FILE, "opening the image file failed"},
    {QVR_E_INVALID_FW_STATE, "wrong firmware state"},
    {QVR_E_UNSUPPORTED_PARAMETER, "parameter not supported"},
    {QVR_E_FAILED_TO_ALLOCATE_MEMORY, "out of memory"},
    {QVR_E_FAILED_SENDING_FAR_END_MSG, "message to the far end failed"},
    {QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE, "interval not in the history"},
    {QVR_E_FAILED_REGISTERING_CALLBACK, "registering a callback failed"},
    {QVR_E_NO_CHANGE_IN_PARAM_VALUE, "parameter value unchanged"},
    {QVR_E_RESTART_SYSTEM_CONFIG_STATE, "system restart, configuration state"},
    {QVR_E_DEACTIVATE_LINE_STATE, "line deactivation state"},
    {QVR_E_INVALID_CONFIG_STATE, "invalid configuration state"},
    {QVR_E_FAILED_STARTING_LOGGING, "starting the logging failed"},
    {QVR_E_FAREND_EOC_NACK, "far end refused"},
};

TEST(ResultText, OfEveryCode) {
  for (QVR_retval_t result = QVR_E_STATUS_OK; result <= QVR_E_FAREND_EOC_NACK; result++) {
    EXPECT_EQ(kWords[result].result, result);
    EXPECT_STREQ(QVR_resultText(result), kWords[result].text);
  }
}

TEST(ResultText, NoTwoCodesSayTheSame) {
  std::set<std::string> texts;
  for (const Words& words : kWords) {
    EXPECT_TRUE(texts.insert(QVR_resultText(words.result)).second) << words.text;
  }
}

TEST(ResultText, OfAnyOtherValueIsUnknown) {
  for (const QVR_retval_t result : {QVR_retval_t{41}, QVR_retval_t{1000}, QVR_retval_t{UINT32_MAX}}) {
    EXPECT_STREQ(QVR_resultText(result), "unknown result");
  }
}

}  // namespace
