#pragma once

// The numbers that name a format and one of its four folders. Kept apart from the format table's
// rows so that code which only passes these around does not rebuild when a row changes.
namespace korvane {

// The built-in plug-in formats, in the order start-up and quit visit them. A table may hold more.
enum TypeIndex { TypeAU = 0, TypeRTAS = 1, TypeMAS = 2, TypeVST = 3 };

// A plug-in's place is a folder pair of its format and whether it lies in the pair's active folder:
// location code 2 * pair + (disabled ? 1 : 0). Every row's pair 0 is system-wide and pair 1 the
// user's, so codes 0..3 name the same four folders for every row; a row may list more pairs.
enum LocationCode {
    LocSystemActive = 0,
    LocSystemDisabled = 1,
    LocUserActive = 2,
    LocUserDisabled = 3
};
constexpr int LocationCount = 4; // the codes of pairs 0 and 1
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
    return loc >= 0 && loc % 2 == 0;
}
inline int locationCode(bool global, bool active)
{
    return global ? (active ? LocSystemActive : LocSystemDisabled)
                  : (active ? LocUserActive : LocUserDisabled);
}

} // namespace korvane
