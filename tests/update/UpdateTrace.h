#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QProgressDialog>
#include <QStringList>

#include <functional>

class PelorinMainWindow;
class QFileDialog;
class QMessageBox;

/// What a run shows, in order, as short texts, and how it begins to show it. Boxes are told with everything
/// that sets them apart from a modal box of the window with plain text, an OK button and no title.
class UpdateTrace : public QObject
{
    Q_OBJECT

public:
    explicit UpdateTrace(PelorinMainWindow& window);
    ~UpdateTrace() override;
    UpdateTrace(const UpdateTrace&) = delete;
    UpdateTrace& operator=(const UpdateTrace&) = delete;

    /// While a run is in progress: lines of the device (see add()), boxes, progress dialogs, backups.
    const QStringList& entries() const { return m_entries; }
    /// Takes a line that the device got; those of the poll are left out.
    void addLine(const QByteArray& line);
    /// Calls this for every dialog and box of a run when it comes up.
    void setOnShow(std::function<void(QWidget&)> what) { m_onShow = std::move(what); }
    void clear() { m_entries.clear(); }

    /// The entries, with lines of images told as how much of which image they are: "wrote loader", or "wrote
    /// 3 lines of loader". @p images are texts of images by name.
    QStringList summary(const QMap<QString, QByteArray>& images) const;
    /// The lines of an image that go to the device, without their ends.
    static QList<QByteArray> linesToSend(const QByteArray& imageText);

    static QProgressDialog* progressDialog(); ///< the visible one
    static QMessageBox* statusBox();          ///< the visible box that is not modal
    static QFileDialog* fileDialog();         ///< the visible one

    static QString describe(const QMessageBox& box, const QWidget& window);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isRunning() const;
    void showed(QWidget& widget);

    QPointer<PelorinMainWindow> m_window;
    QStringList m_entries;
    std::function<void(QWidget&)> m_onShow;
};
