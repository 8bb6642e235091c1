#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace korvane::helper {

// What korvane-helper and the program that starts it say to each other. The request is one JSON
// object on the helper's standard input, {"moves": [{"from": F, "to": T}, ...]}; the answer is
// one JSON line per move on its standard output, in the request's order, then one closing line.
// Paths are the strings PathBytes makes of a file's bytes: Qt's JSON writes an escaped byte as
// "\udcXX" and reads it back unchanged, so a name that is no UTF-8 travels as its own bytes.

// The helper's exit status.
enum Exit {
    ExitAllMoved = 0,
    ExitSomeFailed = 1,
    ExitRefused = 2,      // nothing was touched
    ExitLockNotTaken = 3, // another mover held the folders; nothing was touched
};

// Switching off 10,000 plug-ins asks about 1.5 MiB; anything much larger is no apply of ours.
constexpr qsizetype MaxRequestBytes = 16 * 1024 * 1024;
constexpr qsizetype MaxMoves = 100000;
// Linux's PATH_MAX, counted in the bytes the system is handed.
constexpr qsizetype MaxPathBytes = 4096;
// One answer line: two paths escaped at worst six characters a byte, and an error text.
constexpr qsizetype MaxLineBytes = 64 * 1024;
// The whole answer the program reads: far more than any real apply's.
constexpr qsizetype MaxAnswerBytes = 64 * 1024 * 1024;

struct Move {
    QString from;
    QString to;
    bool operator==(const Move &) const = default;
};

struct MoveResult {
    Move move;
    bool ok = false;
    QString error; // why it failed, as the helper's file operations said it
    int code = 0;  // errno, so the program can tell an occupied target (EEXIST)
};

// The answer's last line.
struct Ending {
    enum Kind { Done, Refused, LockNotTaken };
    Kind kind = Done;
    int moved = 0;
    int failed = 0;
    QString error;  // Refused and LockNotTaken: why, one sentence without a final full stop
    QString path;   // Refused: the path refused, when one was
    QString holder; // LockNotTaken: who holds the lock, when known
};

QByteArray encodeRequest(const QList<Move> &moves);
// The moves, or nullopt with why: not the object above, a key of its own, a value that is no
// string, more than MaxMoves. The paths themselves are judged by the helper's checks.
std::optional<QList<Move>> decodeRequest(const QByteArray &bytes, QString *why);

// One line each, with its line break.
QByteArray encodeResult(const MoveResult &result);
QByteArray encodeEnding(const Ending &ending);

// One line of the answer (without its line break): a move's result or the ending; neither when
// it is not a line the helper writes.
struct AnswerLine {
    std::optional<MoveResult> result;
    std::optional<Ending> ending;
};
AnswerLine decodeAnswerLine(const QByteArray &line);

} // namespace korvane::helper
