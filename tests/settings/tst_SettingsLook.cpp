#include "Resources/Resources.h"
#include "settings/SettingsFormBench.h"
#include "support/Contrast.h"
#include "support/WatchedTest.h"

#include <QHelpEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolTip>

#include <algorithm>
#include <memory>
#include <vector>

namespace {
/// What a small notebook's screen leaves to a window, without the frame and the desktop's bar.
constexpr QSize smallScreen(1366, 700);
/// The same of a screen of 1600 x 1200 pixels at 200 %.
constexpr QSize denseScreen(800, 560);

/// The greatest contrast of any pixel of @p widget to the one beside its text.
double shownContrast(QWidget& widget)
{
    const QImage shown =
        widget.window()->grab({widget.mapTo(widget.window(), QPoint()), widget.size()}).toImage();
    const QColor surface = shown.pixelColor(0, 0);
    double greatest = 1.0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            greatest = std::max(greatest, contrast(surface, shown.pixelColor(x, y)));
        }
    }
    return greatest;
}

bool isCutOff(const QWidget& widget)
{
    if (widget.width() < widget.minimumSizeHint().width()) {
        return true;
    }
    if (widget.hasHeightForWidth()) {
        return widget.height() < widget.heightForWidth(widget.width());
    }
    return widget.height() < widget.sizeHint().height() || widget.width() < widget.sizeHint().width();
}
} // namespace

/// How the form of the settings dialog looks in the program's colours, and how the keyboard and the wheel
/// work in it.
class tst_SettingsLook : public WatchedTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        applyColours();
        applyStyleSheet(*qApp);
    }
    void init() { beginWatch(); }
    void cleanup() { endWatch(); }
    void identityIsWhite();
    void connectionStandsOut_data();
    void connectionStandsOut();
    void connectionTipKeepsItsColour_data();
    void connectionTipKeepsItsColour();
    void fitsASmallScreen();
    void tablesAreShownWhole();
    void nothingIsCutOff_data();
    void nothingIsCutOff();
    void anySizeSettles();
    void wheelDoesNotTakeTheFocus();
    void keyboardGoesThroughTheTabsInOrder();
    void enterClicksNothing();
    void closeButtonCloses();
    void ttlPairs_data();
    void ttlPairs();
    void modePairs_data();
    void modePairs();
    void sleepTimer();
};

void tst_SettingsLook::identityIsWhite()
{
    SettingsFormBench bench;
    QVERIFY(bench.show());
    const QList<QLineEdit*> fields = bench.ui().tabSystemInfo->findChildren<QLineEdit*>();
    QVERIFY(!fields.isEmpty());
    for (QLineEdit* field : fields) {
        field->setText(QStringLiteral("████"));
        const QImage shown = field->grab().toImage();
        QCOMPARE(shown.pixelColor(16, shown.height() / 2), QColor(Qt::white));
    }
}

void tst_SettingsLook::connectionStandsOut_data()
{
    QTest::addColumn<QString>("style");
    QTest::newRow("connected") << QStringLiteral("color:green");
    QTest::newRow("not connected") << QStringLiteral("color:red");
}

void tst_SettingsLook::connectionStandsOut()
{
    QFETCH(QString, style);
    SettingsFormBench bench;
    QLabel* label = bench.ui().labelComStatus;
    QCOMPARE(label->styleSheet(), QStringLiteral("color:red"));
    label->setStyleSheet(style);
    QVERIFY(bench.show());
    const double shown = shownContrast(*label);
    QVERIFY2(shown >= 4.0, qPrintable(QString::number(shown)));
    QVERIFY(label->font().bold());
}

void tst_SettingsLook::connectionTipKeepsItsColour_data()
{
    connectionStandsOut_data();
}

void tst_SettingsLook::connectionTipKeepsItsColour()
{
    QFETCH(QString, style);
    SettingsFormBench bench;
    QLabel* label = bench.ui().labelComStatus;
    label->setStyleSheet(style);
    QVERIFY(bench.show());
    const QPoint middle = label->rect().center();
    QHelpEvent event(QEvent::ToolTip, middle, label->mapToGlobal(middle));
    QCoreApplication::sendEvent(label, &event);
    const auto findTip = [] {
        const QList<QWidget*> windows = QApplication::topLevelWidgets();
        const auto tip = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
            return window->inherits("QTipLabel") && window->isVisible();
        });
        return tip == windows.end() ? nullptr : *tip;
    };
    QTRY_VERIFY(findTip() != nullptr);
    QCOMPARE(findTip()->palette().color(findTip()->foregroundRole()), QColor(0xe6, 0xe8, 0xeb));
    QToolTip::hideText();
    QTRY_VERIFY(findTip() == nullptr);
}

void tst_SettingsLook::fitsASmallScreen()
{
    SettingsFormBench bench;
    QVERIFY(bench.dialog().width() <= smallScreen.width());
    QVERIFY(bench.dialog().height() <= smallScreen.height());
    QVERIFY(bench.show());
    QTabWidget* tabs = bench.ui().tabWidget;
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        QCoreApplication::processEvents();
        const auto* area = tabs->currentWidget()->findChild<QScrollArea*>();
        QVERIFY(area != nullptr);
        QCOMPARE(area->horizontalScrollBar()->maximum(), 0);
        QCOMPARE(area->verticalScrollBar()->maximum(), 0);
    }
    const QSize least = bench.dialog().minimumSizeHint();
    QVERIFY(least.width() <= denseScreen.width() && least.height() <= denseScreen.height());
}

void tst_SettingsLook::tablesAreShownWhole()
{
    SettingsFormBench bench;
    QTableWidget* novalum = bench.ui().tableWidgetNovalumParams;
    novalum->item(3, 6)->setText(QStringLiteral("-32768"));
    bench.ui().tabWidget->setCurrentWidget(bench.ui().tabSystemConfig);
    QVERIFY(bench.show());
    const QList<QTableWidget*> tables = bench.dialog().findChildren<QTableWidget*>();
    QCOMPARE(tables.size(), 7);
    for (QTableWidget* table : tables) {
        bench.ui().tabWidget->setCurrentIndex(table == bench.ui().tableWidgetChannelConfig ? 0 : 1);
        QTRY_VERIFY(table->isVisible());
        QCOMPARE(table->viewport()->width(), table->horizontalHeader()->length());
        QCOMPARE(table->viewport()->height(), table->verticalHeader()->length());
        const QRect inDialog(table->mapTo(&bench.dialog(), QPoint()), table->size());
        QVERIFY2(bench.dialog().rect().contains(inDialog), qPrintable(table->objectName()));
    }
    QVERIFY(novalum->visualItemRect(novalum->item(3, 6)).width() >=
            novalum->fontMetrics().horizontalAdvance(QStringLiteral("-32768")) + 8);
}

void tst_SettingsLook::nothingIsCutOff_data()
{
    QTest::addColumn<int>("points");
    QTest::addColumn<QSize>("size");
    QTest::newRow("as it opens") << 9 << QSize(1000, 690);
    QTest::newRow("dense screen") << 9 << denseScreen;
    QTest::newRow("larger type") << 12 << QSize(1000, 690);
    QTest::newRow("large type") << 18 << QSize(1000, 690);
    QTest::newRow("large type, dense screen") << 18 << denseScreen;
}

void tst_SettingsLook::nothingIsCutOff()
{
    QFETCH(int, points);
    QFETCH(QSize, size);
    SettingsFormBench bench(points);
    const QString sentence =
        QStringLiteral("Shutters follow the external inputs; the shutter buttons are off. ");
    for (QLabel* label : {bench.ui().labelControlModeSummary, bench.ui().labelTTLSummary,
                          bench.ui().labelRunningImage, bench.ui().labelRunningImage2}) {
        label->setText(sentence + sentence);
    }
    bench.dialog().resize(size);
    QVERIFY(bench.show());
    QTabWidget* tabs = bench.ui().tabWidget;
    int seen = 0;
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        QCoreApplication::processEvents();
        const QList<QWidget*> widgets = bench.dialog().findChildren<QWidget*>();
        for (const QWidget* widget : widgets) {
            const bool hasText = widget->inherits("QLabel") || widget->inherits("QPushButton") ||
                                 widget->inherits("QRadioButton") || widget->inherits("QCheckBox") ||
                                 widget->inherits("QSpinBox") || widget->inherits("QGroupBox");
            if (hasText && widget->isVisible()) {
                ++seen;
                QVERIFY2(!isCutOff(*widget), qPrintable(widget->objectName()));
            }
        }
    }
    QVERIFY(seen > 120);
}

void tst_SettingsLook::anySizeSettles()
{
    // A wrapped text and a scroll bar that take each other's room can chase each other for ever.
    SettingsFormBench bench;
    QVERIFY(bench.show());
    QTabWidget* tabs = bench.ui().tabWidget;
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        const auto* area = tabs->currentWidget()->findChild<QScrollArea*>();
        for (int step = 0; step < 60; ++step) {
            bench.dialog().resize(480 + 13 * step, 260 + 9 * step);
            QCoreApplication::processEvents();
            const QSize settled = area->widget()->size();
            QCoreApplication::processEvents();
            QCOMPARE(area->widget()->size(), settled);
        }
    }
}

void tst_SettingsLook::wheelDoesNotTakeTheFocus()
{
    SettingsFormBench bench;
    const QList<QWidget*> controls = bench.controls();
    for (const QWidget* control : controls) {
        if (control->inherits("QComboBox") || control->inherits("QAbstractSpinBox")) {
            QVERIFY2(control->focusPolicy() == Qt::StrongFocus, qPrintable(control->objectName()));
        }
    }
}

void tst_SettingsLook::keyboardGoesThroughTheTabsInOrder()
{
    SettingsFormBench bench;
    const Ui::SettingsDialog& ui = bench.ui();
    const QList<QWidget*> controls = bench.controls();
    // 0 stands for what is above the tabs, 1 to 7 for the pages, 8 for what is below them.
    const auto place = [&ui](const QWidget* widget) {
        for (int i = 0; i < ui.tabWidget->count(); ++i) {
            if (ui.tabWidget->widget(i)->isAncestorOf(widget)) {
                return i + 1;
            }
        }
        return widget == ui.pushButtonClose ? 8 : 0;
    };
    int last = 0;
    int visited = 0;
    QWidget* widget = ui.comboBoxComPort;
    do {
        if (controls.contains(widget) && widget->focusPolicy() != Qt::NoFocus) {
            QVERIFY2(place(widget) >= last, qPrintable(widget->objectName()));
            last = place(widget);
            ++visited;
        }
        widget = widget->nextInFocusChain();
    } while (widget != ui.comboBoxComPort);
    // The channel table is a frame for the widgets in its cells.
    QCOMPARE(visited, controls.size() - 1);
    QCOMPARE(ui.tableWidgetChannelConfig->focusPolicy(), Qt::NoFocus);
    QCOMPARE(last, 8);
    const QList<QTableWidget*> tables = bench.dialog().findChildren<QTableWidget*>();
    for (const QTableWidget* table : tables) {
        QVERIFY2(!table->tabKeyNavigation(), qPrintable(table->objectName()));
    }
}

void tst_SettingsLook::enterClicksNothing()
{
    SettingsFormBench bench;
    QVERIFY(bench.show());
    const QList<QPushButton*> buttons = bench.dialog().findChildren<QPushButton*>();
    QSignalSpy finished(&bench.dialog(), &QDialog::finished);
    std::vector<std::unique_ptr<QSignalSpy>> clicks;
    for (const QPushButton* button : buttons) {
        clicks.push_back(std::make_unique<QSignalSpy>(button, &QPushButton::clicked));
    }
    const QList<QWidget*> fields{bench.ui().lineEditVYRSerialNumber, bench.ui().comboBoxComPort};
    for (QWidget* field : fields) {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_Return);
    }
    QVERIFY(!clicks.empty());
    for (const auto& click : clicks) {
        QCOMPARE(click->size(), 0);
    }
    QVERIFY(finished.isEmpty());
}

void tst_SettingsLook::closeButtonCloses()
{
    SettingsFormBench bench;
    QVERIFY(bench.show());
    QSignalSpy rejected(&bench.dialog(), &QDialog::rejected);
    QTest::mouseClick(bench.ui().pushButtonClose, Qt::LeftButton);
    QCOMPARE(rejected.size(), 1);
    QVERIFY(!bench.dialog().isVisible());
}

void tst_SettingsLook::ttlPairs_data()
{
    QTest::addColumn<QString>("clicked");
    const QStringList all = SettingsFormBench::wavelengths();
    for (const QString& wavelength : all) {
        QTest::newRow(qPrintable(wavelength)) << wavelength;
    }
}

void tst_SettingsLook::ttlPairs()
{
    SettingsFormBench bench;
    QFETCH(QString, clicked);
    const auto radio = [&bench](const char* stem, const QString& wavelength) {
        return bench.find<QRadioButton>(QLatin1String(stem) + wavelength);
    };
    radio("radioButtonTTLShutterClosed", clicked)->click();
    const QStringList all = SettingsFormBench::wavelengths();
    for (const QString& wavelength : all) {
        QCOMPARE(radio("radioButtonTTLShutterClosed", wavelength)->isChecked(), wavelength == clicked);
        QCOMPARE(radio("radioButtonTTLShutterOpen", wavelength)->isChecked(), wavelength != clicked);
        QCOMPARE(radio("radioButtonTTLShutterOpen", wavelength)->text(), QStringLiteral("Open"));
        QCOMPARE(radio("radioButtonTTLShutterClosed", wavelength)->text(), QStringLiteral("Closed"));
    }
    radio("radioButtonTTLShutterOpen", clicked)->click();
    QVERIFY(!radio("radioButtonTTLShutterClosed", clicked)->isChecked());
}

void tst_SettingsLook::modePairs_data()
{
    QTest::addColumn<QString>("group");
    QTest::newRow("radioButtonIntensityControlExternal") << QStringLiteral("Intensity Control");
    QTest::newRow("radioButtonShutterControlExternal") << QStringLiteral("Shutter Control");
    QTest::newRow("radioButtonDespecklerOff") << QStringLiteral("Despeckler");
}

void tst_SettingsLook::modePairs()
{
    SettingsFormBench bench;
    QFETCH(QString, group);
    auto* clicked = bench.find<QRadioButton>(QString::fromLatin1(QTest::currentDataTag()));
    clicked->click();
    const QList<QRadioButton*> radios = bench.ui().tabControlMode->findChildren<QRadioButton*>();
    QCOMPARE(radios.size(), 6);
    for (const QRadioButton* radio : radios) {
        const auto* box = qobject_cast<const QGroupBox*>(radio->parentWidget());
        QVERIFY(box != nullptr);
        const bool isFirst =
            radio->text() == QLatin1String("Host USB") || radio->text() == QLatin1String("On");
        QCOMPARE(radio->isChecked(), box->title() == group ? radio == clicked : isFirst);
    }
}

void tst_SettingsLook::sleepTimer()
{
    SettingsFormBench bench;
    const QSpinBox* minutes = bench.ui().spinBoxSleepTimer;
    QCOMPARE(minutes->minimum(), 0);
    QCOMPARE(minutes->maximum(), 99);
    QCOMPARE(minutes->suffix(), QStringLiteral(" min"));
    QVERIFY(!minutes->keyboardTracking());
    QCOMPARE(minutes->isEnabled(), bench.ui().checkBoxSleepTimer->isChecked());
}

QTEST_MAIN(tst_SettingsLook)
#include "tst_SettingsLook.moc"
