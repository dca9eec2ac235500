#pragma once

#include <QCoreApplication>

class QCheckBox;
class QLabel;
class QRadioButton;
class QSpinBox;
class QWidget;
struct OperatingChoices;

/// Who controls intensities and shutters, the despeckler and the sleep timer. It shows what it is told; its
/// widgets' slots are the dialog's.
class ControlModePage
{
    Q_DECLARE_TR_FUNCTIONS(ControlModePage)

public:
    /// Finds its widgets below @p dialog, which keeps them.
    explicit ControlModePage(const QWidget& dialog);

    void show(const OperatingChoices& choices);
    /// The choices of "Restore Defaults"; the sleep timer is none of them.
    void showDefaults();
    /// Brings the line that tells who controls what, and what may be edited, up to the choices shown.
    void refresh();
    bool isShutterControlExternal() const;

private:
    QRadioButton* m_intensityHost;
    QRadioButton* m_intensityExternal;
    QRadioButton* m_shutterHost;
    QRadioButton* m_shutterExternal;
    QRadioButton* m_despecklerOn;
    QRadioButton* m_despecklerOff;
    QCheckBox* m_sleepEnabled;
    QSpinBox* m_sleepMinutes;
    QCheckBox* m_verboseLogging;
    QLabel* m_summary;
};
