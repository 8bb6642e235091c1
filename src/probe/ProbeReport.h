#pragma once

#include <QByteArrayView>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

// One plug-in inside a binary, as the probe reported it after loading it.
struct ProbedPlugin {
    QString id;    // CLAP: the plug-in's id; LADSPA and DSSI: the unique ID as digits
    QString label; // LADSPA and DSSI
    QString name;
    QString vendor;       // CLAP vendor, LADSPA Maker
    QString copyright;    // LADSPA and DSSI
    QString version;      // CLAP
    QString description;  // CLAP
    QString url;          // CLAP
    QStringList features; // CLAP
    int audioInputs = 0;
    int audioOutputs = 0;
    int controlInputs = 0;
    int controlOutputs = 0;
    bool runSynth = false; // DSSI: the plug-in is an instrument
    int dssiApiVersion = 0;
};

// What the probe printed for one binary: its format ("ladspa", "dssi", "clap"), its plug-ins, and
// what went wrong inside the probe (no entry point, a library that cannot be loaded).
struct ProbeReport {
    QString format;
    QString clapVersion;
    QList<ProbedPlugin> plugins;
    QString error;

    QJsonObject toJson() const;
    // Reads the probe's output. The probe is another process running foreign code: its output
    // is outside data, read with limits (at most maxPlugins plug-ins, texts cut to 4096
    // characters); anything that is not a report gives nullopt and the reason.
    static std::optional<ProbeReport> parse(QByteArrayView json, QString *error = nullptr);
    static std::optional<ProbeReport> fromJson(const QJsonObject &object, QString *error = nullptr);

    static constexpr int maxPlugins = 4096;
};

} // namespace korvane
