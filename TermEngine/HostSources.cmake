# What the engine has for its host, and needs no screen for: the pseudo-terminal, input and string formats.
set(TERM_HOST_SOURCES
    DeliveryQueue.cpp
    LocalProcess.cpp
    LocalProcessChildReaper.cpp
    ProcessExitSource.cpp
    Pty.cpp
    TerminalEnvironment.cpp
    TerminalIOPipeline.cpp
    TerminalOptions.cpp
)
set(TERM_HOST_HEADERS
    DeliveryQueue.h
    LocalProcess.h
    LocalProcessChildReaper.h
    ProcessExitSource.h
    Pty.h
    TerminalEnvironment.h
    TerminalIOPipeline.h
    TerminalOptions.h
    UniqueFd.h
)
set(TERM_HOST_LIBRARIES Threads::Threads)
