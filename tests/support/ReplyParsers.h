#pragma once

#include "device/Records.h"
#include "device/Replies.h"
#include "device/ResultCodes.h"

#include <algorithm>
#include <array>

/// One text as a reply of the device, put into every parser of replies.
struct ReplyParsers
{
    explicit ReplyParsers(const QString& reply)
        : codes{Replies::functionalMode(reply, mode),     Replies::sleepTime(reply, minutes),
                Replies::intensitySource(reply, source),  Replies::fault(reply, report),
                Replies::warning(reply, report),          Replies::hours(reply, numbers),
                Replies::intensityLevels(reply, numbers), Replies::shutterStates(reply, flags),
                Replies::ttlInvertStates(reply, flags),   Replies::temperatures(reply, readings),
                Replies::imageVersion(reply, image),      Replies::productConfig(reply, record)}
    {
        Replies::isYes(reply);
        Replies::tellsFirmwareUpdate(reply);
        Records::tellsWrote(reply);
        QString text;
        Replies::keyedText(reply, QStringLiteral("sleep"), text);
    }

    /// What must hold of any text: each parser gives one of its codes and leaves a value of its range. Tells
    /// the first that does not; null when all do.
    const char* fault() const
    {
        constexpr std::array<int, 3> possible{DeviceResult::Ok, -40009, -40015};
        for (const int code : codes) {
            if (std::find(possible.begin(), possible.end(), code) == possible.end())
                return "a code";
        }
        const int modeNumber = mode;
        const int sourceNumber = static_cast<int>(source);
        if (modeNumber < 0 || modeNumber > 2)
            return "the functional mode";
        if (minutes > 99)
            return "the minutes of sleep";
        if (sourceNumber < 0 || sourceNumber > 1)
            return "the source of intensities";
        if (report.message.contains(QLatin1Char('\n')))
            return "the message of a fault or warning";
        if (image.version.major > 255)
            return "the version";
        if (!Records::writeProductConfig(record).startsWith("prod_config:"))
            return "the identity";
        return nullptr;
    }
    /// Parsers that took the text.
    auto takers() const { return std::count(codes.begin(), codes.end(), DeviceResult::Ok); }

    FunctionalMode_t mode = FunctionalModeIdle;
    quint8 minutes = 0;
    ControlSource source{};
    StateReport report;
    OperatingHours numbers{};
    ShutterStates flags{};
    Temperatures readings;
    ImageVersion image;
    ProductConfig record;
    std::array<int, 12> codes; ///< behind the values, as it is made by filling them
};
