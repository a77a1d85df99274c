// SpawnAttributes: the attributes every child this toolkit starts with posix_spawn is given.
#pragma once

#include <csignal>
#include <spawn.h>

namespace orvel {

/// posix_spawn attributes, destroyed with the object: the child starts with no signal blocked and
/// with the default action for the signals a parent commonly catches or ignores (interrupts,
/// termination, broken pipes, child status), whatever the starting thread had; with
/// newProcessGroup, it leads a process group of its own so that it and what it starts can be ended
/// together.
class SpawnAttributes
{
public:
    explicit SpawnAttributes(bool newProcessGroup = false)
    {
        posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigemptyset(&none);
        sigset_t defaults;
        sigemptyset(&defaults);
        for (int s : { SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGCHLD, SIGUSR1, SIGUSR2 })
            sigaddset(&defaults, s);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &defaults);
        short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        if (newProcessGroup) {
            posix_spawnattr_setpgroup(&m_attributes, 0);
            flags |= POSIX_SPAWN_SETPGROUP;
        }
        posix_spawnattr_setflags(&m_attributes, flags);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&m_attributes); }

    SpawnAttributes(const SpawnAttributes &) = delete;
    SpawnAttributes &operator=(const SpawnAttributes &) = delete;

    [[nodiscard]] const posix_spawnattr_t *get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes;
};

} // namespace orvel
