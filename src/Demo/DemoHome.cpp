#include "Demo/DemoHome.h"

#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>

namespace DemoHome {

QString defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/vyr-demo");
}

bool enter(const QString& folder)
{
    const QDir home(QDir(folder).absolutePath());
    const QString config = home.filePath(QStringLiteral("config"));
    const QString documents = home.filePath(QStringLiteral("Documents"));
    if (!QDir().mkpath(config) || !QDir().mkpath(documents)) {
        return false;
    }

    // The desktop's own way to name a user's folders; it lives in the configuration folder, so one
    // variable moves settings and documents alike.
    QSaveFile userFolders(config + QStringLiteral("/user-dirs.dirs"));
    if (!userFolders.open(QIODevice::WriteOnly)) {
        return false;
    }
    userFolders.write("XDG_DOCUMENTS_DIR=\"" + QFile::encodeName(documents) + "\"\n");
    return userFolders.commit() && qputenv("XDG_CONFIG_HOME", QFile::encodeName(config));
}

} // namespace DemoHome
