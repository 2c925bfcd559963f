orv_fuzz_target(git_status GitStatusFuzz.cpp MODULES OrvGit)
orv_fuzz_target(git_log GitLogFuzz.cpp MODULES OrvGit)
orv_fuzz_target(git_diff GitDiffFuzz.cpp MODULES OrvGit)
orv_fuzz_target(git_clone GitCloneFuzz.cpp MODULES OrvGit)
