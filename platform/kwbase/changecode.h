#pragma once

/// \file

/// What a subject notifies its observers of. Other programs use the numbers, too: they never change.
enum class TChangeCode : int {
    GoingAway = 2,      ///< the value is about to be removed; observers detach and forget it
    Changed = 3,        ///< the content or the state has changed
    ListReplaced = 7,   ///< the whole content of a list has been replaced
    NodeGoingAway = 18, ///< the node is about to be removed with everything below it
};
