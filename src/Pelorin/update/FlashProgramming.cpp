#include "update/FlashProgramming.h"

#include "QsLog2_1_0/QsLog.h"
#include "device/Device.h"
#include "device/Records.h"
#include "update/UpdateResult.h"

#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>

#include <chrono>

namespace {

// The device's USB link has packets of this size, and takes a command that fills one for one that goes on.
constexpr int commandSizeToAvoid = 64;
constexpr char endOfFileCharacter = 0x1A;
constexpr int widthInCharacters = 50; ///< of the progress dialog, which is not to change with its titles
/// Painting the bar takes longer than a line on a fast device; nobody sees more steps than this.
constexpr std::chrono::milliseconds paintEvery{20};

/// The command that writes a line of an image.
QByteArray writeCommand(const QByteArray& line)
{
    QByteArray command = Records::writePrefix + line;
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
    const int code = device.transaction(writeCommand(line), reply);
    const bool isWritten = code == DeviceResult::Ok && Records::tellsWrote(reply);
    if (!isWritten) {
        QS_ERROR() << "FLASH line not written:" << line << "result" << code << "reply" << reply;
    }
    return isWritten ? UpdateResult::Ok
                     : (code == DeviceResult::Ok ? UpdateResult::LineNotWritten : UpdateResult::LineNotSent);
}

/// The next line with its end; empty behind the last one.
QByteArray nextLine(QFile& image)
{
    const QByteArray line = image.readLine();
    return line.startsWith(endOfFileCharacter) ? QByteArray() : line;
}

/// A progress dialog whose bar is set directly: a modal dialog that is told a value runs the event loop, for
/// every line and on top of the wait for its answer.
class ProgressBox
{
public:
    ProgressBox(int lineCount, const QString& title, QWidget* window);
    ~ProgressBox() { delete m_dialog; }
    ProgressBox(const ProgressBox&) = delete;
    ProgressBox& operator=(const ProgressBox&) = delete;

    bool show(int line);

private:
    QPointer<QProgressDialog> m_dialog; ///< goes with the window
    QProgressBar* m_bar;                ///< the dialog's
    QElapsedTimer m_sincePaint;
};

ProgressBox::ProgressBox(int lineCount, const QString& title, QWidget* window)
    : m_dialog(new QProgressDialog), m_bar(new QProgressBar)
{
    m_dialog->setParent(window, Qt::Dialog | Qt::WindowTitleHint);
    m_dialog->setBar(m_bar);
    m_dialog->setLabelText(QProgressDialog::tr("%1...<br><br>Do not unplug unit").arg(title.toHtmlEscaped()));
    m_dialog->setCancelButtonText(QProgressDialog::tr("Cancel"));
    m_dialog->setMinimumWidth(m_dialog->fontMetrics().averageCharWidth() * widthInCharacters);
    m_dialog->setRange(0, lineCount);
    m_dialog->setWindowTitle(QProgressDialog::tr("Firmware Update"));
    m_dialog->setWindowModality(Qt::ApplicationModal);
    // It goes when the programming is over, which may be later than the count of the check tells.
    m_dialog->setAutoReset(false);
    m_dialog->setAutoClose(false);
    m_dialog->setMinimumDuration(0);
    m_dialog->setValue(0);
    m_dialog->show();
    // A key that was meant for the dialog before must not cancel: the button is one Tab away.
    m_bar->setAccessibleName(title);
    m_bar->setFocusPolicy(Qt::StrongFocus);
    m_bar->setFocus();
    const auto buttons = m_dialog->findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        button->setAutoDefault(false);
    }
    m_sincePaint.start();
}

bool ProgressBox::show(int line)
{
    if (!m_dialog || m_dialog->wasCanceled()) {
        return false;
    }
    const bool isPaintDue = m_sincePaint.hasExpired(paintEvery.count());
    m_bar->setAttribute(Qt::WA_UpdatesDisabled, !isPaintDue);
    m_bar->setValue(line);
    m_bar->setAttribute(Qt::WA_UpdatesDisabled, false);
    if (isPaintDue) {
        m_sincePaint.restart();
    }
    return true;
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
    ProgressBox dialog(lineCount, title, window);
    QS_INFO() << "Start programming FLASH";
    return sendLines(device, image, [&dialog](int line) { return dialog.show(line); });
}
