orv_fuzz_target(git_status GitStatusFuzz.cpp OrvGit)
orv_fuzz_target(git_log GitLogFuzz.cpp OrvGit)
orv_fuzz_target(git_diff GitDiffFuzz.cpp OrvGit)
orv_fuzz_target(git_clone GitCloneFuzz.cpp OrvGit)
