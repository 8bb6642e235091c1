#include "helper/HelperProtocol.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace korvane::helper {

namespace {

const QString kMoves = QStringLiteral("moves");
const QString kFrom = QStringLiteral("from");
const QString kTo = QStringLiteral("to");
const QString kOk = QStringLiteral("ok");
const QString kError = QStringLiteral("error");
const QString kCode = QStringLiteral("code");
const QString kEnd = QStringLiteral("end");
const QString kMoved = QStringLiteral("moved");
const QString kFailed = QStringLiteral("failed");
const QString kPath = QStringLiteral("path");
const QString kHolder = QStringLiteral("holder");

const char *const kEndings[] = {"done", "refused", "lock"};

QByteArray line(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

// Whether object has exactly these keys.
bool hasKeys(const QJsonObject &object, std::initializer_list<QString> keys)
{
    if (object.size() != qsizetype(keys.size()))
        return false;
    for (const QString &key : keys)
        if (!object.contains(key))
            return false;
    return true;
}

// A count the helper wrote: a whole number that fits.
std::optional<int> count(const QJsonValue &value)
{
    const double number = value.toDouble(-1);
    if (!value.isDouble() || number < 0 || number > MaxMoves || number != int(number))
        return std::nullopt;
    return int(number);
}

} // namespace

QByteArray encodeRequest(const QList<Move> &moves)
{
    QJsonArray list;
    for (const Move &move : moves)
        list.append(QJsonObject{{kFrom, move.from}, {kTo, move.to}});
    return QJsonDocument(QJsonObject{{kMoves, list}}).toJson(QJsonDocument::Compact);
}

std::optional<QList<Move>> decodeRequest(const QByteArray &bytes, QString *why)
{
    const auto refuse = [why](const QString &reason) {
        *why = reason;
        return std::nullopt;
    };
    if (bytes.size() > MaxRequestBytes)
        return refuse(QStringLiteral("the request is larger than %1 bytes").arg(MaxRequestBytes));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return refuse(QStringLiteral("the request is no JSON: %1 at byte %2")
                          .arg(error.errorString())
                          .arg(error.offset));
    const QJsonObject top = document.object();
    if (!document.isObject() || !hasKeys(top, {kMoves}) || !top.value(kMoves).isArray())
        return refuse(QStringLiteral("the request is not an object holding only \"moves\""));
    const QJsonArray list = top.value(kMoves).toArray();
    if (list.size() > MaxMoves)
        return refuse(QStringLiteral("the request asks more than %1 moves").arg(MaxMoves));
    QList<Move> moves;
    moves.reserve(list.size());
    for (qsizetype i = 0; i < list.size(); ++i) {
        const QJsonObject entry = list.at(i).toObject();
        if (!list.at(i).isObject() || !hasKeys(entry, {kFrom, kTo})
            || !entry.value(kFrom).isString() || !entry.value(kTo).isString())
            return refuse(
                QStringLiteral("move %1 is not an object of two strings, \"from\" and \"to\"")
                    .arg(i + 1));
        moves.append({entry.value(kFrom).toString(), entry.value(kTo).toString()});
    }
    return moves;
}

QByteArray encodeResult(const MoveResult &result)
{
    return line({{kFrom, result.move.from},
                 {kTo, result.move.to},
                 {kOk, result.ok},
                 {kError, result.error},
                 {kCode, result.code}});
}

QByteArray encodeEnding(const Ending &ending)
{
    QJsonObject object{{kEnd, QLatin1String(kEndings[ending.kind])},
                       {kMoved, ending.moved},
                       {kFailed, ending.failed},
                       {kError, ending.error}};
    if (!ending.path.isEmpty())
        object.insert(kPath, ending.path);
    if (!ending.holder.isEmpty())
        object.insert(kHolder, ending.holder);
    return line(object);
}

AnswerLine decodeAnswerLine(const QByteArray &bytes)
{
    AnswerLine answer;
    if (bytes.size() > MaxLineBytes)
        return answer;
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(bytes, &error).object();
    if (error.error != QJsonParseError::NoError)
        return answer;
    if (hasKeys(object, {kFrom, kTo, kOk, kError, kCode})) {
        const QJsonValue code = object.value(kCode);
        if (!object.value(kFrom).isString() || !object.value(kTo).isString()
            || !object.value(kOk).isBool() || !object.value(kError).isString() || !code.isDouble()
            || code.toDouble() != code.toInt(-1) || code.toInt() < 0)
            return answer;
        answer.result = MoveResult{{object.value(kFrom).toString(), object.value(kTo).toString()},
                                   object.value(kOk).toBool(),
                                   object.value(kError).toString(),
                                   code.toInt()};
        return answer;
    }
    if (!object.value(kEnd).isString() || !object.value(kError).isString())
        return answer;
    for (const QString &key : object.keys())
        if (key != kEnd && key != kMoved && key != kFailed && key != kError && key != kPath
            && key != kHolder)
            return answer;
    Ending ending;
    const QString kind = object.value(kEnd).toString();
    int k = 0;
    while (k < 3 && kind != QLatin1String(kEndings[k]))
        ++k;
    const std::optional<int> moved = count(object.value(kMoved));
    const std::optional<int> failed = count(object.value(kFailed));
    if (k == 3 || !moved || !failed || (object.contains(kPath) && !object.value(kPath).isString())
        || (object.contains(kHolder) && !object.value(kHolder).isString()))
        return answer;
    ending.kind = Ending::Kind(k);
    ending.moved = *moved;
    ending.failed = *failed;
    ending.error = object.value(kError).toString();
    ending.path = object.value(kPath).toString();
    ending.holder = object.value(kHolder).toString();
    answer.ending = ending;
    return answer;
}

} // namespace korvane::helper
