#pragma once

class ArchiveExtractor;
class QString;
class QWidget;

/// The step of an update that makes files of the release archive: checks the file, unpacks it into its folder
/// with up to three attempts, and tells the user in boxes of its own why it failed.
namespace ArchiveStep {

/// True when the archive was unpacked. An archive that does not unpack is deleted, so that a damaged one is
/// not chosen again. The boxes belong to @p window, which is borrowed; when it goes meanwhile, no more box
/// comes and the answer is false. Events are processed while it unpacks, the user's included: the caller sees
/// to it that no second update begins. A call from within another call returns true at once and does nothing.
bool run(ArchiveExtractor& extractor, const QString& archivePath, QWidget* window);

/// True from the start of a run until its last box was closed.
bool isBusy();

} // namespace ArchiveStep
