#pragma once

#include <QDialog>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>

class QAbstractButton;
class QListWidgetItem;
class Scenario;

namespace Ui {
class ScenarioDialog;
}

/// Asks for the name of a scenario, to save under or to load. It writes nothing itself: the caller takes the
/// name of an accepted dialog and does the rest.
class ScenarioDialog : public QDialog
{
    Q_OBJECT

public:
    static constexpr int SaveMode = 1;
    static constexpr int LoadMode = 0;

    /// @p mode is SaveMode; any other value loads. The store of the names is borrowed and may be null.
    ScenarioDialog(QWidget* parent, int mode, Scenario* store);
    ~ScenarioDialog() override;

    ScenarioDialog(const ScenarioDialog&) = delete;
    ScenarioDialog& operator=(const ScenarioDialog&) = delete;

    /// The name typed or chosen, exactly as it is kept.
    QString scenarioName() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void handleSelection();
    void handleDoubleClick(QListWidgetItem* item);
    void on_buttonBox_clicked(QAbstractButton* button);
    void on_pushButtonDelete_clicked();

private:
    bool isSaving() const { return m_mode == SaveMode; }
    QStringList storedNames() const;
    void refreshList();
    bool selectFirstByKey(int key);
    void takeName(const QListWidgetItem& item);
    void acceptName();
    void acceptForSaving();
    void acceptForLoading();
    void warn(const QString& text);
    bool isOverwritingConfirmed();

    std::unique_ptr<Ui::ScenarioDialog> m_ui;
    const int m_mode;
    const QPointer<Scenario> m_store;
};
