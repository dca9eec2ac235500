#include "Options.h"

#include "Simulator/CommandArguments.h"

#include <QCommandLineParser>

namespace Simulator {
namespace {
const char* const kDescription =
    "A simulated illuminator on a serial port of its own.\n\n"
    "Prints its port as \"port: PATH\" and takes commands on standard input, one per line; \"help\"\n"
    "lists them. It ends with the end of its input and of its script, or by \"quit\".\n\n"
    "Exit codes: 0 ended, 1 wrong command line, 2 no port to be had, 3 script unreadable or with\n"
    "an error.";

struct Known
{
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")};
    QCommandLineOption paced{QStringLiteral("paced"),
                             QStringLiteral("Bytes take their time as at 19200 baud (so it is by default).")};
    QCommandLineOption unpaced{QStringLiteral("unpaced"), QStringLiteral("Answers come at once.")};
    QCommandLineOption stay{QStringLiteral("stay"),
                            QStringLiteral("Keep running after the end of the input.")};
    QCommandLineOption image{QStringLiteral("image"),
                             QStringLiteral("Start in this image: loader, updater or application (default)."),
                             QStringLiteral("image"), QStringLiteral("application")};
    QCommandLineOption name{QStringLiteral("name"), QStringLiteral("File name of the port, default ttyVYR0."),
                            QStringLiteral("name"), QStringLiteral("ttyVYR0")};
    QCommandLineOption script{QStringLiteral("script"),
                              QStringLiteral("Carry out the commands of this file first."),
                              QStringLiteral("file")};
};

ParsedOptions badUsage(const QString& text)
{
    return {false, {}, text + QStringLiteral("\n--help shows how to use it."), BadUsage};
}

ParsedOptions interpret(const QCommandLineParser& parser, const Known& known)
{
    const QStringList strayWords = parser.positionalArguments();
    if (!strayWords.isEmpty()) {
        return badUsage(QStringLiteral("What is this for? ") + strayWords.first());
    }
    if (parser.isSet(known.paced) && parser.isSet(known.unpaced)) {
        return badUsage(QStringLiteral("--paced and --unpaced exclude each other."));
    }
    const auto image = Arguments::image(parser.value(known.image));
    if (!image) {
        return badUsage(QStringLiteral("No such image: ") + parser.value(known.image));
    }
    Options options;
    options.paced = !parser.isSet(known.unpaced);
    options.stay = parser.isSet(known.stay);
    options.image = *image;
    options.name = parser.value(known.name);
    options.scriptPath = parser.value(known.script);
    return {true, options, {}, Ended};
}
} // namespace

ParsedOptions parseOptions(const QStringList& arguments)
{
    const Known known;
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(kDescription));
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions(
        {known.help, known.paced, known.unpaced, known.stay, known.image, known.name, known.script});
    if (!parser.parse(arguments)) {
        return badUsage(parser.errorText());
    }
    if (parser.isSet(known.help)) {
        return {false, {}, parser.helpText().trimmed(), Ended};
    }
    if (parser.isSet(version)) {
        const QString text = QCoreApplication::applicationName() + QLatin1Char(' ');
        return {false, {}, text + QCoreApplication::applicationVersion(), Ended};
    }
    return interpret(parser, known);
}

} // namespace Simulator
