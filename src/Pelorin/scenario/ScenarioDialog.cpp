#include "scenario/ScenarioDialog.h"

#include "boxes/TellUser.h"
#include "help/Help.h"
#include "scenario/OneLine.h"
#include "scenario/Scenario.h"
#include "ui_ScenarioDialog.h"

#include <QKeyEvent>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <algorithm>
#include <array>

namespace {
constexpr int exactNameRole = Qt::UserRole;
} // namespace

ScenarioDialog::ScenarioDialog(QWidget* parent, int mode, Scenario* store)
    : QDialog(parent), m_ui(std::make_unique<Ui::ScenarioDialog>()), m_mode(mode), m_store(store)
{
    m_ui->setupUi(this);
    const QString caption = isSaving() ? tr("Save Scenario") : tr("Load Scenario");
    setWindowTitle(caption);
    m_ui->labelLoadSaveScenario->setText(caption);
    m_ui->frameEditScenarioName->setVisible(isSaving());

    QPushButton* const accept = m_ui->buttonBox->button(QDialogButtonBox::Ok);
    accept->setText(isSaving() ? tr("Save") : tr("Load"));
    accept->setToolTip(isSaving() ? tr("Keep the channels under this name")
                                  : tr("Set the channels as they were kept"));
    m_ui->buttonBox->button(QDialogButtonBox::Cancel)->setToolTip(tr("Leave everything as it is"));

    connect(m_ui->listWidgetSavedScenarios, &QListWidget::itemSelectionChanged, this,
            &ScenarioDialog::handleSelection);
    connect(m_ui->listWidgetSavedScenarios, &QListWidget::itemDoubleClicked, this,
            &ScenarioDialog::handleDoubleClick);
    m_ui->listWidgetSavedScenarios->installEventFilter(this);
    Help::install(this, [this] { return Help::pageAt(this, QStringLiteral("scenarios")); });
    refreshList();
    if (isSaving()) {
        m_ui->lineEditScenarioName->setFocus();
    } else {
        m_ui->listWidgetSavedScenarios->setFocus();
    }
}

ScenarioDialog::~ScenarioDialog() = default;

QString ScenarioDialog::scenarioName() const
{
    return m_ui->lineEditScenarioName->text();
}

bool ScenarioDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_ui->listWidgetSavedScenarios && event->type() == QEvent::KeyPress &&
        selectFirstByKey(static_cast<const QKeyEvent*>(event)->key())) {
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

bool ScenarioDialog::selectFirstByKey(int key)
{
    // The list takes its first row as the one it stands on before anything is selected: "down" would go to
    // the second, and nowhere in a list of one.
    static constexpr std::array<int, 6> movingKeys{Qt::Key_Up,     Qt::Key_Down,     Qt::Key_Home,
                                                   Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_End};
    QListWidget& list = *m_ui->listWidgetSavedScenarios;
    const bool isMoving = std::find(movingKeys.begin(), movingKeys.end(), key) != movingKeys.end();
    if (!isMoving || list.count() == 0 || !list.selectedItems().isEmpty()) {
        return false;
    }
    list.setCurrentRow(key == Qt::Key_End ? list.count() - 1 : 0);
    return true;
}

QStringList ScenarioDialog::storedNames() const
{
    return m_store ? m_store->names() : QStringList();
}

void ScenarioDialog::refreshList()
{
    m_ui->listWidgetSavedScenarios->clear();
    const QStringList names = storedNames();
    for (const QString& name : names) {
        auto* item = new QListWidgetItem(onOneLine(name), m_ui->listWidgetSavedScenarios);
        item->setData(exactNameRole, name);
    }
    // Saving the first scenario, and being told that there is none to load, need the other buttons always.
    m_ui->listWidgetSavedScenarios->setEnabled(!names.isEmpty());
    m_ui->pushButtonDelete->setEnabled(!names.isEmpty());
}

void ScenarioDialog::takeName(const QListWidgetItem& item)
{
    m_ui->lineEditScenarioName->setText(item.data(exactNameRole).toString());
}

void ScenarioDialog::handleSelection()
{
    const QList<QListWidgetItem*> selected = m_ui->listWidgetSavedScenarios->selectedItems();
    if (!selected.isEmpty()) {
        takeName(*selected.first());
    }
}

void ScenarioDialog::handleDoubleClick(QListWidgetItem* item)
{
    takeName(*item);
    acceptName();
}

void ScenarioDialog::on_buttonBox_clicked(QAbstractButton* button)
{
    if (m_ui->buttonBox->buttonRole(button) == QDialogButtonBox::AcceptRole) {
        acceptName();
    } else {
        reject();
    }
}

void ScenarioDialog::on_pushButtonDelete_clicked()
{
    // Names are never removed: somebody else's scenario would be gone with a click.
    refreshList();
    if (!isSaving()) {
        // Nothing is selected any more, and the field that would show the name is hidden.
        m_ui->lineEditScenarioName->clear();
    }
}

void ScenarioDialog::acceptName()
{
    if (isSaving()) {
        acceptForSaving();
    } else {
        acceptForLoading();
    }
}

void ScenarioDialog::acceptForSaving()
{
    if (scenarioName().isEmpty()) {
        warn(tr("Please enter a scenario name"));
        return;
    }
    const QPointer<ScenarioDialog> self(this);
    const bool confirmed = !storedNames().contains(scenarioName()) || isOverwritingConfirmed();
    if (self && confirmed) {
        accept();
    }
}

void ScenarioDialog::acceptForLoading()
{
    if (m_ui->listWidgetSavedScenarios->count() == 0) {
        warn(tr("No saved scenarios to load"));
    } else if (scenarioName().isEmpty()) {
        warn(tr("Please select a scenario from the list"));
    } else {
        accept();
    }
}

void ScenarioDialog::warn(const QString& text)
{
    tellUser(this, QMessageBox::Warning, text);
}

bool ScenarioDialog::isOverwritingConfirmed()
{
    const QPointer<QMessageBox> box(new QMessageBox(QMessageBox::Question, QString(),
                                                    tr("Scenario exists. Overwrite?"),
                                                    QMessageBox::Yes | QMessageBox::No, this));
    box->setTextFormat(Qt::PlainText);
    nameForScreenReader(*box);
    // A desktop's own words for the two may differ.
    box->button(QMessageBox::Yes)->setText(tr("&Yes"));
    box->button(QMessageBox::No)->setText(tr("&No"));
    box->setDefaultButton(QMessageBox::Yes);
    box->setEscapeButton(QMessageBox::No);
    const bool confirmed = box->exec() == QMessageBox::Yes;
    delete box;
    return confirmed;
}
