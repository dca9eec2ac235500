#pragma once

#include <QByteArray>

#include <cstdio>
#include <unistd.h>

/// Takes over the process's standard error while it lives.
class StderrCapture
{
public:
    StderrCapture() : m_original(dup(STDERR_FILENO)), m_file(std::tmpfile())
    {
        dup2(fileno(m_file), STDERR_FILENO);
    }
    ~StderrCapture()
    {
        dup2(m_original, STDERR_FILENO);
        close(m_original);
        static_cast<void>(std::fclose(m_file));
    }
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;
    StderrCapture(StderrCapture&&) = delete;
    StderrCapture& operator=(StderrCapture&&) = delete;

    /// Everything written so far; what was asked for once is not told again.
    QByteArray take()
    {
        QByteArray text;
        char chunk[4096];
        ssize_t count = 0;
        while ((count = pread(fileno(m_file), chunk, sizeof chunk, m_position)) > 0) {
            text.append(chunk, static_cast<int>(count));
            m_position += count;
        }
        return text;
    }

private:
    int m_original;
    std::FILE* m_file;
    off_t m_position = 0;
};
