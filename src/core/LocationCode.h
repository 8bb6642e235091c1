#pragma once

// The numbers that name a format and one of its four folders. Kept apart from the format table's
// rows so that code which only passes these around does not rebuild when a row changes.
namespace korvane {

// The built-in plug-in formats, in the order start-up and quit visit them. A table may hold more.
enum TypeIndex { TypeAU = 0, TypeRTAS = 1, TypeMAS = 2, TypeVST = 3 };

// The four folders of a format.
enum LocationCode {
    LocSystemActive = 0,
    LocSystemDisabled = 1,
    LocUserActive = 2,
    LocUserDisabled = 3
};
constexpr int LocationCount = 4;
inline bool isValidLocation(int loc)
{
    return loc >= 0 && loc < LocationCount;
}
inline bool isSystemLocation(int loc)
{
    return loc == LocSystemActive || loc == LocSystemDisabled;
}
inline bool isActiveLocation(int loc)
{
    return loc == LocSystemActive || loc == LocUserActive;
}
inline int locationCode(bool global, bool active)
{
    return global ? (active ? LocSystemActive : LocSystemDisabled)
                  : (active ? LocUserActive : LocUserDisabled);
}

} // namespace korvane
