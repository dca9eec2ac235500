#pragma once

#include "device/DeviceTypes.h"
#include "device/SerialPorts.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class Device;

/// What is known of the connected device beside its images, as it was read last.
struct KnownIdentity
{
    std::optional<ProductConfig> product;
    NecselControllerInfo controller;
};

/// The texts that go into a diagnostics archive: English, one fact a line, each line ended. What comes from a
/// device stands there without its line breaks.
namespace DiagnosticsTexts {

/// Of the program, what it runs on, and the device as the link knows it: nothing is sent. @p device may be
/// null.
QString versions(const QString& programVersion, const Device* device, const KnownIdentity& identity);

/// @p openPort is the one that the program has open; empty for none.
QString serialPorts(const QList<SerialPortEntry>& ports, const QString& openPort);

/// Tells the user what he is about to send. @p members and @p remarks are lines of the two lists.
QString readme(const QString& programVersion, const QDateTime& now, const QStringList& members,
               const QStringList& remarks);
} // namespace DiagnosticsTexts
