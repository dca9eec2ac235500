#pragma once

#include <QMainWindow>

/// The slots that the form connects by the widgets' names, eight of each kind: every one hands its channel's
/// number, counting from 1, to the one function that does the work.
class NumberedChannelSlots : public QMainWindow
{
    Q_OBJECT

public:
    using QMainWindow::QMainWindow;

private slots:
    void on_verticalSliderChannel1_valueChanged(int value) { sliderMoved(1, value); }
    void on_verticalSliderChannel2_valueChanged(int value) { sliderMoved(2, value); }
    void on_verticalSliderChannel3_valueChanged(int value) { sliderMoved(3, value); }
    void on_verticalSliderChannel4_valueChanged(int value) { sliderMoved(4, value); }
    void on_verticalSliderChannel5_valueChanged(int value) { sliderMoved(5, value); }
    void on_verticalSliderChannel6_valueChanged(int value) { sliderMoved(6, value); }
    void on_verticalSliderChannel7_valueChanged(int value) { sliderMoved(7, value); }
    void on_verticalSliderChannel8_valueChanged(int value) { sliderMoved(8, value); }
    void on_lineEditSliderPercentage1_editingFinished() { percentageTyped(1); }
    void on_lineEditSliderPercentage2_editingFinished() { percentageTyped(2); }
    void on_lineEditSliderPercentage3_editingFinished() { percentageTyped(3); }
    void on_lineEditSliderPercentage4_editingFinished() { percentageTyped(4); }
    void on_lineEditSliderPercentage5_editingFinished() { percentageTyped(5); }
    void on_lineEditSliderPercentage6_editingFinished() { percentageTyped(6); }
    void on_lineEditSliderPercentage7_editingFinished() { percentageTyped(7); }
    void on_lineEditSliderPercentage8_editingFinished() { percentageTyped(8); }
    void on_lineEditSliderName1_editingFinished() { nameTyped(1); }
    void on_lineEditSliderName2_editingFinished() { nameTyped(2); }
    void on_lineEditSliderName3_editingFinished() { nameTyped(3); }
    void on_lineEditSliderName4_editingFinished() { nameTyped(4); }
    void on_lineEditSliderName5_editingFinished() { nameTyped(5); }
    void on_lineEditSliderName6_editingFinished() { nameTyped(6); }
    void on_lineEditSliderName7_editingFinished() { nameTyped(7); }
    void on_lineEditSliderName8_editingFinished() { nameTyped(8); }

private:
    virtual void sliderMoved(int number, int value) = 0; ///< by whomever, to @p value percent
    virtual void percentageTyped(int number) = 0;
    virtual void nameTyped(int number) = 0;
};
