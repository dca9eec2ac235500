#include "Options.h"
#include "Session.h"
#include "SignalWatcher.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const Simulator::SignalWatcher signalWatcher;
    QCoreApplication::setApplicationName(QStringLiteral("vyr-simulator"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VYR_VERSION));
    QTextStream err(stderr);
    const Simulator::ParsedOptions parsed = Simulator::parseOptions(QCoreApplication::arguments());
    if (!parsed.goesOn) {
        QTextStream(parsed.exitCode == Simulator::Ended ? stdout : stderr) << parsed.text << '\n';
        return parsed.exitCode;
    }
    QObject::connect(&signalWatcher, &Simulator::SignalWatcher::endRequested, &application,
                     &QCoreApplication::quit);
    Simulator::Session session(parsed.options);
    if (const auto problem = session.start(); problem != Simulator::Ended) {
        err << session.errorString() << '\n';
        return problem;
    }
    return QCoreApplication::exec();
}
