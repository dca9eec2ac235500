#pragma once

#include "Simulator/IlluminatorModel.h"

#include <QByteArray>
#include <QMetaType>

#include <chrono>

Q_DECLARE_METATYPE(Simulator::Image)

/// A model whose warm-up is over, in the image asked for.
inline Simulator::IlluminatorModel warmModel(Simulator::Image image = Simulator::Image::Application)
{
    Simulator::IlluminatorModel model;
    model.firmware().store(image);
    model.lasers().setWarmupDuration(std::chrono::milliseconds::zero());
    model.boot(image, "Test");
    return model;
}

inline QByteArray ask(Simulator::IlluminatorModel& model, const QByteArray& line)
{
    return model.handle(line).text;
}
