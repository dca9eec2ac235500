#pragma once

#include <csignal>
#include <sys/resource.h>

/// Files end at this size while it lives: what a full disk looks like to this process.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        // Without this the system would end the process where it can also report an error.
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limited{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
    void (*m_oldHandler)(int);
};
