#include "update/FlashProgramming.h"

#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "update/UpdateResult.h"

#include <QFile>
#include <QPointer>
#include <QProgressDialog>

namespace {

// The device's USB link has packets of this size, and takes a command that fills one for one that goes on.
constexpr int commandSizeToAvoid = 64;
constexpr char endOfFileCharacter = 0x1A;

/// The command that writes a line of an image.
QByteArray writeCommand(const QByteArray& line)
{
    QByteArray command = "wf:" + line;
    // The last line of a file may lack its end, and the device waits for one.
    if (!line.endsWith('\n')) {
        command += '\n';
    }
    if (command.size() == commandSizeToAvoid) {
        command += '\n';
    }
    return command;
}

int sendLine(Device& device, const QByteArray& line)
{
    QString reply;
    if (device.transaction(writeCommand(line), reply) != DeviceResult::Ok) {
        return UpdateResult::LineNotSent;
    }
    return reply.contains(QLatin1String("Wrote")) ? UpdateResult::Ok : UpdateResult::LineNotWritten;
}

/// The next line with its end; empty behind the last one.
QByteArray nextLine(QFile& image)
{
    const QByteArray line = image.readLine();
    return line.startsWith(endOfFileCharacter) ? QByteArray() : line;
}

QProgressDialog* showDialog(int lineCount, const QString& title, QWidget* window)
{
    auto* const dialog =
        new QProgressDialog(QProgressDialog::tr("%1...<br><br>Do not unplug unit").arg(title.toHtmlEscaped()),
                            QProgressDialog::tr("Cancel"), 0, lineCount);
    dialog->setParent(window, Qt::Dialog | Qt::WindowTitleHint);
    dialog->setWindowTitle(QProgressDialog::tr("Firmware Update"));
    dialog->setWindowModality(Qt::ApplicationModal);
    // It goes when the programming is over, which may be later than the count of the check tells.
    dialog->setAutoReset(false);
    dialog->setAutoClose(false);
    dialog->setMinimumDuration(0);
    dialog->setValue(0);
    dialog->show();
    return dialog;
}

} // namespace

int FlashProgramming::sendLines(Device& device, QFile& image, const Progress& goesOn)
{
    image.seek(0);
    image.readLine(); // a title, not for the device
    int count = 0;
    for (QByteArray line = nextLine(image); !line.isEmpty(); line = nextLine(image)) {
        if (!goesOn(++count)) {
            return UpdateResult::Canceled;
        }
        const int result = sendLine(device, line);
        if (result != UpdateResult::Ok) {
            return result;
        }
    }
    return UpdateResult::Ok;
}

int FlashProgramming::sendWithDialog(Device& device, QFile& image, int lineCount, const QString& title,
                                     QWidget* window)
{
    const QPointer<QProgressDialog> dialog = showDialog(lineCount, title, window);
    QS_INFO() << "Start programming FLASH";
    const int result = sendLines(device, image, [&dialog](int line) {
        if (!dialog || dialog->wasCanceled()) {
            return false;
        }
        dialog->setValue(line);
        return true;
    });
    delete dialog;
    return result;
}
