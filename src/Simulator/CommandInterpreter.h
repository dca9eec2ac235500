#pragma once

#include <QByteArray>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <vector>

namespace Simulator {

class SimulatedIlluminator;

/// What came of a command.
struct Outcome
{
    bool ok = true;
    QString text; ///< to show to the user, without line end; may be empty, and may have several lines
    std::chrono::milliseconds wait{0}; ///< the next command of the same scene is due after this time
    bool quit = false;

    static Outcome error(const QString& text) { return {false, text, {}, false}; }
    static Outcome badArgument(const QString& word)
    {
        return error(QStringLiteral("this makes no sense here: ") + word);
    }
};

/// Carries out the commands by which a person, or a script, plays with a simulated illuminator: one line,
/// one command, told by help(). Never waits.
class CommandInterpreter : public QObject
{
    Q_OBJECT

public:
    /// The illuminator stays the caller's and must outlive the interpreter.
    explicit CommandInterpreter(SimulatedIlluminator& illuminator, QObject* parent = nullptr);

    /// An empty line and one that begins with "#" do nothing. A line that is not understood, or has an
    /// argument that makes no sense, gives an error and does nothing.
    Outcome run(const QString& line);
    static QString help();

    /// One command as the table of commands has it.
    struct Entry
    {
        const char* name;
        const char* usage; ///< the arguments, optional ones in brackets
        const char* what;
        int minWords;
        int maxWords; ///< -1: any number, for free text
        Outcome (*carryOut)(CommandInterpreter& interpreter, const QStringList& words);
    };

    // ---- for the commands themselves
    SimulatedIlluminator& illuminator() { return m_illuminator; }
    void setTrafficLog(bool on);

signals:
    /// One line of traffic, while the log is switched on.
    void trafficLogged(const QString& text);

private:
    void logTraffic(const char* arrow, const QByteArray& bytes);

    SimulatedIlluminator& m_illuminator;
    QMetaObject::Connection m_received;
    QMetaObject::Connection m_sent;
};

// The commands by concern, each in a file of its own.
const std::vector<CommandInterpreter::Entry>& sceneCommands();  ///< scripts, and the interpreter itself
const std::vector<CommandInterpreter::Entry>& deviceCommands(); ///< the illuminator and its inputs
const std::vector<CommandInterpreter::Entry>& cableCommands();  ///< the cable and what goes wrong on it

/// Bytes as text on one line: what does not print is shown as \xNN, the line feed as \n.
QString readable(const QByteArray& bytes);

} // namespace Simulator
