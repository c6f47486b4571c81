#include "job.h"

#include <cstdio>

namespace zipengine {

std::string Job::Text(int id, char const* fallback) const {
    char buffer[260] = {};
    if (m_command.lpMessageDisplay != nullptr &&
        m_command.lpMessageDisplay(ZIP_MESSAGE_TEXT, 0, id, 0, buffer, nullptr,
                                   m_command.lpMessageDisplayData) == 1) {
        buffer[259] = '\0';
        return buffer;
    }
    return fallback;
}

void Job::Warn(int id, char const* fallback, std::string const& subject) const {
    if (m_command.quietFlag == 0) {
        std::fprintf(stderr, "%s %s\n", Text(id, fallback).c_str(), subject.c_str());
    }
}

void Job::MajorStatus(std::string const& text, unsigned long percent) {
    std::string copy = text;
    if (m_command.lpMajorStatus != nullptr &&
        m_command.lpMajorStatus(copy.data(), percent, m_command.lpMajorUserData) != 0) {
        Fail(ZE_ABORTED);
    }
}

void Job::MinorStatus(std::string const& text, unsigned long percent) {
    std::string copy = text;
    if (m_command.lpMinorStatus != nullptr &&
        m_command.lpMinorStatus(copy.data(), percent, m_command.lpMinorUserData) != 0) {
        Fail(ZE_ABORTED);
    }
}

int Job::CodeOf(zip_error_t const* error, int openCode) {
    if (m_failure != ZE_OK) {
        return m_failure;
    }
    switch (zip_error_code_zip(error)) {
        case ZIP_ER_OK:
            return ZE_OK;
        case ZIP_ER_MEMORY:
            return ZE_MEM;
        case ZIP_ER_EOF:
            return ZE_EOF;
        case ZIP_ER_NOZIP:
        case ZIP_ER_INCONS:
        case ZIP_ER_CRC:
            return ZE_FORM;
        case ZIP_ER_TMPOPEN:
            return ZE_TEMP;
        case ZIP_ER_WRITE:
            return ZE_WRITE;
        case ZIP_ER_READ:
            return ZE_READ;
        case ZIP_ER_OPEN:
        case ZIP_ER_NOENT:
            return openCode;
        case ZIP_ER_CANCELLED:
            return ZE_ABORTED;
        case ZIP_ER_INVAL:
        case ZIP_ER_ENCRNOTSUPP:
        case ZIP_ER_COMPNOTSUPP:
            return ZE_PARMS;
        default:
            return ZE_INCOMPLETE;
    }
}

}  // namespace zipengine
