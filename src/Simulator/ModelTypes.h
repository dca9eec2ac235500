#pragma once

#include <QByteArray>

#include <array>
#include <chrono>
#include <optional>
#include <utility>

namespace Simulator {

constexpr int kChannelCount = 8;
/// The names under which the channels are addressed on the line, in the device's order.
constexpr std::array<const char*, kChannelCount> kChannelNames{"405", "445", "470", "520",
                                                               "528", "555", "640", "730"};

/// The index of the channel with this name; no value for any other text.
std::optional<int> channelByName(const QByteArray& name);

/// The firmware images. The loader has a place of its own; the application and the loader updater share one.
enum class Image { Loader, LoaderUpdater, Application };
/// The word by which an image announces itself, for instance "VYRApp".
QByteArray imageName(Image image);

struct Version
{
    int major = 0;
    int minor = 0;
    int patch = 0;
};
/// "2.7.0"
QByteArray toText(const Version& version);
/// Three decimal numbers of 0 to 255 with dots between them; no value for any other text.
std::optional<Version> versionFromText(const QByteArray& text);

enum class Mode { Off, Warmup, Idle, Run }; ///< Off: no application runs
enum class Source { External, Host };       ///< who controls the levels, or the shutters

/// The device starts one of its images anew.
struct Restart
{
    Image image = Image::Application;
    QByteArray cause;        ///< what the device gives as its last reset's cause afterwards
    QByteArray announcement; ///< sent once the image runs, where the port has stayed; with its line feed
    bool dropsPort = false; ///< the device leaves the bus meanwhile, so that the port comes back as a new one
};

/// What the device does about one line.
struct Reply
{
    Reply() = default;
    Reply(QByteArray replyText) : text(std::move(replyText)) {}
    Reply(const char* replyText) : text(replyText) {}

    QByteArray text; ///< with its line feed; empty = silence
    std::chrono::milliseconds thinkTime{0};
    std::optional<Restart> restart; ///< begins once the text is out
};

/// The text with its line feed.
QByteArray asLine(const QByteArray& text);

namespace Answers {
/// To lines that ask whether something is so.
constexpr const char* yesNo(bool yes)
{
    return yes ? "Yes\n" : "No\n";
}

// To lines that ask for nothing. None of them can pass for the answer to a query that comes later.
constexpr const char* kDone = "done\n";
constexpr const char* kRefused = "refused\n"; ///< understood, but not now or not with this value
constexpr const char* kUnknown = "?\n";
} // namespace Answers

} // namespace Simulator
