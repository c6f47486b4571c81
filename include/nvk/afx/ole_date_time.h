// COleDateTime: the framework's OLE automation date, a double counting days
// from 30 December 1899 whose fraction is the time of day, with a status.
#pragma once

#include "nvk/nvkafx_export.h"

using DATE = double;

class NVKAFX_EXPORT COleDateTime {
public:
    enum DateTimeStatus { error = -1, valid = 0, invalid = 1, null = 2 };

    COleDateTime() = default;
    COleDateTime(DATE date) : m_dt(date) {}

    DateTimeStatus GetStatus() const { return m_status; }
    void SetStatus(DateTimeStatus status) { m_status = status; }
    operator DATE() const { return m_dt; }

    DATE m_dt = 0;
    DateTimeStatus m_status = valid;
};
