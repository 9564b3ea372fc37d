// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTextCodec>

namespace tztest {

/// While it lives, the toolkit takes the locale's encoding, also that of file names, for this one.
class LocaleCodec
{
public:
    explicit LocaleCodec(const char *name)
        : m_previous(QTextCodec::codecForLocale())
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(name));
    }
    ~LocaleCodec() { QTextCodec::setCodecForLocale(m_previous); }
    LocaleCodec(const LocaleCodec &) = delete;
    LocaleCodec &operator=(const LocaleCodec &) = delete;

private:
    QTextCodec *m_previous;
};

} // namespace tztest
