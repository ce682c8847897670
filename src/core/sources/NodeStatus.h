#pragma once

#include <QString>

// What a node is doing, and the pair of texts that says so: a short one (a symbol or a few
// characters, for the outline's status column) and a long one (a phrase, for the Alerts view).
class NodeStatus {
public:
    enum class State {
        Unloaded,   // made without a data file: "!" / "Press "Reload" to begin"
        Idle,       // nothing under way, nothing to say (after a cancellation)
        Queued,     // waiting in its view's download queue
        Connecting, // the request is out
        Receiving,  // the answer is coming; a percentage once its length is known
        Failed,     // the last attempt failed; the activity log says why
        Done,       // the data file holds good data (the last attempt, or one before it)
    };

    // The texts of a state. A receiving node shows the percentage when there is one (percent at
    // least 0) and "Connected..." before that. A queued node's long text is its view's own (see
    // DownloadQueue); "-" is the image views' one.
    static QString shortText(State state, int percent = -1);
    static QString longText(State state, int percent = -1);

    // U+221A, the check mark of a node with good data.
    static QString checkMark();
    static QString errorLong();
};
