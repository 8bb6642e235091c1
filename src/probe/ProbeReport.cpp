#include "probe/ProbeReport.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

namespace korvane {

namespace {

constexpr qsizetype kMaxText = 4096;
constexpr int kMaxFeatures = 256;

QString text(const QJsonObject &object, const char *key)
{
    const QJsonValue value = object.value(QLatin1String(key));
    return value.isString() ? value.toString().left(kMaxText) : QString();
}

int count(const QJsonObject &object, const char *key)
{
    const double value = object.value(QLatin1String(key)).toDouble(0);
    return value >= 0 && value <= 1e6 ? int(value) : 0;
}

} // namespace

QJsonObject ProbeReport::toJson() const
{
    QJsonObject object{{QStringLiteral("probe"), 1}, {QStringLiteral("format"), format}};
    if (!clapVersion.isEmpty())
        object.insert(QStringLiteral("clapVersion"), clapVersion);
    if (!error.isEmpty())
        object.insert(QStringLiteral("error"), error);
    QJsonArray list;
    for (const ProbedPlugin &p : plugins) {
        QJsonObject plugin;
        auto put = [&](const char *key, const QString &value) {
            if (!value.isEmpty())
                plugin.insert(QLatin1String(key), value);
        };
        if (format == QLatin1String("clap")) {
            put("id", p.id);
            put("name", p.name);
            put("vendor", p.vendor);
            put("version", p.version);
            put("description", p.description);
            put("url", p.url);
            plugin.insert(QStringLiteral("features"), QJsonArray::fromStringList(p.features));
        } else {
            plugin.insert(QStringLiteral("uniqueId"), p.id.toLongLong());
            put("label", p.label);
            put("name", p.name);
            put("maker", p.vendor);
            put("copyright", p.copyright);
            plugin.insert(QStringLiteral("audioInputs"), p.audioInputs);
            plugin.insert(QStringLiteral("audioOutputs"), p.audioOutputs);
            plugin.insert(QStringLiteral("controlInputs"), p.controlInputs);
            plugin.insert(QStringLiteral("controlOutputs"), p.controlOutputs);
            if (format == QLatin1String("dssi")) {
                plugin.insert(QStringLiteral("dssiApiVersion"), p.dssiApiVersion);
                plugin.insert(QStringLiteral("runSynth"), p.runSynth);
            }
        }
        list.append(plugin);
    }
    object.insert(QStringLiteral("plugins"), list);
    return object;
}

std::optional<ProbeReport> ProbeReport::fromJson(const QJsonObject &object, QString *error)
{
    if (object.value(QLatin1String("probe")).toInt() != 1) {
        if (error)
            *error = QStringLiteral("not a probe report");
        return std::nullopt;
    }
    ProbeReport report;
    report.format = text(object, "format");
    report.clapVersion = text(object, "clapVersion");
    report.error = text(object, "error");
    const QJsonArray plugins = object.value(QLatin1String("plugins")).toArray();
    if (plugins.size() > maxPlugins) {
        if (error)
            *error = QStringLiteral("more than %1 plug-ins").arg(maxPlugins);
        return std::nullopt;
    }
    for (const QJsonValue item : plugins) {
        const QJsonObject o = item.toObject();
        ProbedPlugin p;
        const QJsonValue uniqueId = o.value(QLatin1String("uniqueId"));
        if (uniqueId.isDouble()) {
            // A LADSPA ID is an unsigned long; anything else in its place says nothing.
            const double number = uniqueId.toDouble();
            if (number >= 0 && number <= 9007199254740992.0 && number == std::trunc(number))
                p.id = QString::number(qint64(number));
        } else {
            p.id = text(o, "id");
        }
        p.label = text(o, "label");
        p.name = text(o, "name");
        p.vendor = o.contains(QLatin1String("maker")) ? text(o, "maker") : text(o, "vendor");
        p.copyright = text(o, "copyright");
        p.version = text(o, "version");
        p.description = text(o, "description");
        p.url = text(o, "url");
        const QJsonArray features = o.value(QLatin1String("features")).toArray();
        for (qsizetype i = 0; i < features.size() && i < kMaxFeatures; ++i) {
            if (features[i].isString())
                p.features.append(features[i].toString().left(kMaxText));
        }
        p.audioInputs = count(o, "audioInputs");
        p.audioOutputs = count(o, "audioOutputs");
        p.controlInputs = count(o, "controlInputs");
        p.controlOutputs = count(o, "controlOutputs");
        p.runSynth = o.value(QLatin1String("runSynth")).toBool();
        p.dssiApiVersion = count(o, "dssiApiVersion");
        report.plugins.append(p);
    }
    return report;
}

std::optional<ProbeReport> ProbeReport::parse(QByteArrayView json, QString *error)
{
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(json.toByteArray(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        if (error)
            *error = parseError.error != QJsonParseError::NoError
                         ? QStringLiteral("the probe's report is not JSON: %1 at %2")
                               .arg(parseError.errorString())
                               .arg(parseError.offset)
                         : QStringLiteral("the probe's report is not an object");
        return std::nullopt;
    }
    return fromJson(document.object(), error);
}

} // namespace korvane
