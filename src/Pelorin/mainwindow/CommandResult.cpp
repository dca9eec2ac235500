#include "mainwindow/CommandResult.h"

#include "QsLog2_1_0/QsLog.h"
#include "device/ResultCodes.h"

void logCommandResult(int result, const char* busyText, const char* errorText)
{
    if (result == DeviceResult::Busy) {
        QS_WARN() << busyText;
    } else if (result != DeviceResult::Ok) {
        QS_ERROR() << errorText << result;
    }
}
