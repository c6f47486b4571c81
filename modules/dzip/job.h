// One run of the engine: the caller's record, the texts it gives, its
// callbacks, and the first failure met, which becomes the return code.
#pragma once

#include <zip.h>

#include <cstdint>
#include <string>

#include "nvk/archive/zip_cmd_struct.h"

namespace zipengine {

class Job {
public:
    explicit Job(ZIPCMDSTRUCT& command) : m_command(command) {}

    ZIPCMDSTRUCT& Command() { return m_command; }

    // The text of message `id` from the caller, or `fallback`.
    std::string Text(int id, char const* fallback) const;
    // Shows a warning with the file it concerns, unless the caller asked for
    // quiet.
    void Warn(int id, char const* fallback, std::string const& subject) const;

    // The callbacks; a result other than 0 stops the run.
    void MajorStatus(std::string const& text, unsigned long percent);
    void MinorStatus(std::string const& text, unsigned long percent);
    bool Aborted() const { return m_failure == ZE_ABORTED; }

    // The first failure sticks: later ones are consequences of it.
    void Fail(int code) {
        if (m_failure == ZE_OK) {
            m_failure = code;
        }
    }
    int Failure() const { return m_failure; }

    // The return code for a failure of the library; the failure that a
    // source of ours recorded comes first.
    int CodeOf(zip_error_t const* error, int openCode);

private:
    ZIPCMDSTRUCT& m_command;
    int m_failure = ZE_OK;
};

}  // namespace zipengine
