#pragma once

/// \file

/// What a subject tells its observers. The numbers cross program borders and are kept.
enum class TChangeCode : int {
    GoingAway = 2,      ///< the value is about to be removed; observers detach and forget it
    Changed = 3,        ///< the content or the state has changed
    ListReplaced = 7,   ///< a list has been filled anew as a whole
    NodeGoingAway = 18, ///< the node is about to be removed with everything below it
};
