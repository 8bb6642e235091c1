#pragma once

namespace korvane {

// What a format's manager asks of the preferences, by type index. The preferences answer from
// their store each time, so a change made in the window counts from the next question on.
class FormatSettings {
public:
    virtual ~FormatSettings() = default;

    virtual bool scansSubfolders(int type) const = 0;
    virtual bool appliesSetAfterLoading(int type) const = 0;
    virtual bool showsContent(int type) const = 0;
    virtual bool movesContent(int type) const = 0;
};

} // namespace korvane
