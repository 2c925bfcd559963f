#pragma once

#include <vector>

namespace term {

/// The main function of tests whose expectations are files: with --update they are written anew, and the tests don't
/// run.
class UpdateMain {
public:
    using Update = void (*)();
    static bool add(Update update) {
        updates().push_back(update);
        return true;
    }
    static std::vector<Update>& updates() {
        static std::vector<Update> all;
        return all;
    }
};

} // namespace term
