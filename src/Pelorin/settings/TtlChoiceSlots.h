#pragma once

#include <QDialog>

/// The slots that the form connects by the widgets' names, a pair for each wavelength: every one hands its
/// channel, counting from 0, to the one function that does the work.
class TtlChoiceSlots : public QDialog
{
    Q_OBJECT

public:
    using QDialog::QDialog;

private slots:
    void on_radioButtonTTLShutterOpen405_clicked() { ttlChosen(0, false); }
    void on_radioButtonTTLShutterClosed405_clicked() { ttlChosen(0, true); }
    void on_radioButtonTTLShutterOpen445_clicked() { ttlChosen(1, false); }
    void on_radioButtonTTLShutterClosed445_clicked() { ttlChosen(1, true); }
    void on_radioButtonTTLShutterOpen470_clicked() { ttlChosen(2, false); }
    void on_radioButtonTTLShutterClosed470_clicked() { ttlChosen(2, true); }
    void on_radioButtonTTLShutterOpen520_clicked() { ttlChosen(3, false); }
    void on_radioButtonTTLShutterClosed520_clicked() { ttlChosen(3, true); }
    void on_radioButtonTTLShutterOpen528_clicked() { ttlChosen(4, false); }
    void on_radioButtonTTLShutterClosed528_clicked() { ttlChosen(4, true); }
    void on_radioButtonTTLShutterOpen555_clicked() { ttlChosen(5, false); }
    void on_radioButtonTTLShutterClosed555_clicked() { ttlChosen(5, true); }
    void on_radioButtonTTLShutterOpen640_clicked() { ttlChosen(6, false); }
    void on_radioButtonTTLShutterClosed640_clicked() { ttlChosen(6, true); }
    void on_radioButtonTTLShutterOpen730_clicked() { ttlChosen(7, false); }
    void on_radioButtonTTLShutterClosed730_clicked() { ttlChosen(7, true); }

private:
    /// The user's choice of what a high input does: open the shutter, or close it (@p inverted).
    virtual void ttlChosen(quint8 channelIndex, bool inverted) = 0;
};
