#include "mainwindow/SettingsStore.h"

#include "QsLog2_1_0/QsLog.h"
#include "compat/QtVersion.h"

#include <QByteArrayList>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>

namespace {
constexpr int maximumCopies = 9;

std::unique_ptr<QSettings> makeStore()
{
    return std::make_unique<QSettings>(QSettings::UserScope, QStringLiteral("Tarnwick"),
                                       QStringLiteral("VYR"));
}

/// The file is written as a whole: texts that another build left in it would otherwise go back changed,
/// although nobody touched them.
void keepTextsWhole(QSettings& store)
{
    const bool fallbacks = store.fallbacksEnabled();
    store.setFallbacksEnabled(false);
    const QStringList keys = store.allKeys();
    for (const QString& key : keys) {
        const QVariant value = store.value(key);
        const QVariant kept =
            value.userType() == QMetaType::QString ? QtVersion::storable(value.toString()) : value;
        if (kept.userType() != value.userType()) {
            store.setValue(key, kept);
        }
    }
    store.setFallbacksEnabled(fallbacks);
}

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// An older copy may be the better one, so none is ever replaced; the same content is kept once.
void copyAside(const QString& fileName)
{
    const QByteArray content = contentOf(fileName);
    for (int number = 0; number <= maximumCopies; ++number) {
        QString copyName = fileName + QLatin1String(".unreadable");
        if (number > 0) {
            copyName += QStringLiteral(".%1").arg(number);
        }
        if (QFile::exists(copyName) && contentOf(copyName) == content) {
            return;
        }
        if (!QFile::exists(copyName)) {
            if (QFile::copy(fileName, copyName)) {
                QS_WARN() << "Settings file cannot be read; copied to" << copyName;
            } else {
                QS_ERROR() << "Settings file cannot be read and could not be copied to" << copyName;
            }
            return;
        }
    }
    QS_WARN() << "Settings file cannot be read; all places for copies are taken" << fileName;
}

/// Every key is a line of its own in the file; the store's own report misses a disk that is full.
bool isWhole(QSettings& store, const QByteArray& content)
{
    const bool fallbacks = store.fallbacksEnabled();
    store.setFallbacksEnabled(false);
    const auto keys = store.allKeys().size();
    store.setFallbacksEnabled(fallbacks);
    const QByteArrayList lines = content.split('\n');
    const auto isKey = [](const QByteArray& line) { return !line.isEmpty() && !line.startsWith('['); };
    return (content.isEmpty() || content.endsWith('\n')) &&
           std::count_if(lines.begin(), lines.end(), isKey) == keys;
}

/// Puts the last good content back in place of a broken one.
void restore(const QString& fileName, const QByteArray& content)
{
    QSaveFile file(fileName);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
                         file.flush() && file.commit();
    if (!written) {
        QS_ERROR() << "Settings of the last run could not be put back" << fileName;
    }
}
} // namespace

QString dataFolder()
{
    const QString documents =
        QStandardPaths::locate(QStandardPaths::DocumentsLocation, QString(), QStandardPaths::LocateDirectory);
    return QDir::cleanPath(documents + QLatin1String("/Tarnwick/VYR"));
}

QString logFileIn(const QString& folder)
{
    return folder + QLatin1String("/VYR_Log.txt");
}

std::unique_ptr<QSettings> openSettingsStore()
{
    std::unique_ptr<QSettings> store = makeStore();
    // Sections are parsed when they are first asked for, and only then does the store know its state.
    (void)store->allKeys();
    if (store->status() != QSettings::FormatError) {
        keepTextsWhole(*store);
        return store;
    }
    copyAside(store->fileName());
    // The state sticks to the object: a later failure to save could not be told from this one.
    store.reset();
    return makeStore();
}

bool flushSettings(QSettings& store)
{
    const QString fileName = store.fileName();
    const QByteArray before = contentOf(fileName);
    store.sync();
    // Where settings are kept elsewhere than in a file, the store's own report is all there is.
    const bool whole = !QFileInfo(fileName).isFile() || isWhole(store, contentOf(fileName));
    // The store's own status never forgets an earlier failure; a second view of the same file has only this
    // one.
    if (QSettings(fileName, store.format()).status() == QSettings::NoError && whole) {
        return true;
    }
    QS_ERROR() << "Settings could not be saved" << fileName;
    if (!whole && !before.isEmpty()) {
        restore(fileName, before);
    }
    return false;
}
