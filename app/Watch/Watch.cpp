#include "app/Watch/Watch.h"

#include <utility>

namespace tarnwick {

namespace {

std::optional<std::string> recordingNote(Recording recording) {
    switch (recording) {
    case Recording::records:
        return std::nullopt;
    case Recording::otherRecords:
        return "Another Tarnwick records the statistics; this one records nothing.";
    case Recording::cannotRecord:
        break;
    }
    return "The statistics are not stored: their folder can’t be written or locked.";
}

} // namespace

Watch::Watch(Needs needs, std::unique_ptr<Presentation> presentation)
    : needs_(std::move(needs)), presentation_(std::move(presentation)) {
}

Watch::~Watch() {
    needs_.monitor.onTick = nullptr;
}

void Watch::start() {
    needs_.monitor.onTick = [this](double now) { presentation_->show(now); };
    needs_.monitor.start();
    presentation_->show(needs_.loop.now());
    noteLoop_ = std::make_unique<RenderLoop>(needs_.loop, [this] { updateNotes(); });
}

void Watch::updateNotes() {
    const Reading& reading = needs_.monitor.reading();
    const std::optional<PingError>& error = reading.startError;
    // An error that stays the same needs no second look at the permission.
    if (notedRecording_ == reading.recording && notedError_ == error) {
        return;
    }
    notedRecording_ = reading.recording;
    notedError_ = error;
    std::vector<std::string> notes;
    if (error && error->kind == PingError::Kind::socket) {
        if (const auto permission = needs_.missingPingPermission()) {
            notes.push_back("This user may not ping yet. Allow it with: " + *permission);
        } else {
            notes.push_back(error->message());
        }
    }
    if (const auto note = recordingNote(reading.recording)) {
        notes.push_back(*note);
    }
    if (notes != notes_) {
        notes_ = notes;
        // The notes do not depend on what the presentation reads while it shows them.
        withoutTracking([this] { presentation_->setNotes(notes_); });
    }
}

} // namespace tarnwick
