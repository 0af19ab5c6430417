#pragma once

#include <optional>
#include <string>

namespace letterloft {

// The hidden names by which a move across file systems can be told apart and settled after a crash. All of one move
// share a number:
//   note     in the source's folder, made first and removed last: a link whose text is the item's name, followed by the
//            absolute path it moves to; last changed in 1970 once the item has been set aside, so that what
//            comes to its place later is never taken for it
//   staging  in the target's folder: the copy, until it is complete and durable and gets the item's name
//   aside    in the source's folder: the item itself, once the copy has the item's name, while it is being removed
struct MoveMark {
    enum class Kind { note, staging, aside };

    std::string number;

    // A number that no other move has.
    static MoveMark fresh();

    std::string name(Kind kind) const;
};

// What a note says.
struct MoveNote {
    std::string item;
    std::string target;

    std::string text() const { return item + target; }
    static std::optional<MoveNote> fromText(const std::string& text);
};

struct FoundMark {
    MoveMark mark;
    MoveMark::Kind kind;
};

// None if the name is not exactly one of ours.
std::optional<FoundMark> moveMarkNamed(const std::string& name);

} // namespace letterloft
