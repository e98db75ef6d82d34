#include "zqbase/zqtest/zqtestprotocol.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace
{
std::string escape(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    for (char c : text)
    {
        switch (c)
        {
        case '\\':
            out += "\\\\";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::string unescape(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '\\' || i + 1 == text.size())
        {
            out += text[i];
            continue;
        }
        const char c = text[++i];
        out += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
    }
    return out;
}

std::vector<std::string> splitFields(const std::string& line)
{
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;)
    {
        const std::size_t tab = line.find('\t', start);
        fields.push_back(unescape(line.substr(start, tab - start)));
        if (tab == std::string::npos)
            return fields;
        start = tab + 1;
    }
}

unsigned long toNumber(const std::string& text)
{
    std::size_t used = 0;
    const unsigned long value = std::stoul(text, &used);
    if (used != text.size())
        throw std::runtime_error("bad number '" + text + "'");
    return value;
}
} // namespace

void ZqTestEventWriter::send(const std::string& line)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::fflush(stdout);
    std::fflush(stderr);
    std::string data;
    const off_t position = lseek(STDOUT_FILENO, 0, SEEK_CUR);
    if (position > m_outputMark)
    {
        m_outputMark = position;
        data = "O\t" + std::to_string(position) + '\n';
    }
    data += line + '\n';
    std::size_t written = 0;
    while (written < data.size())
    {
        const ssize_t n = ::write(m_fd, data.data() + written, data.size() - written);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return; // the runner is gone; nobody is left to tell
        written += static_cast<std::size_t>(n);
    }
}

void ZqTestEventWriter::OnPhase(EZqTestPhase phase)
{
    send("P\t" + std::to_string(static_cast<int>(phase)));
}

void ZqTestEventWriter::OnSubtestStart(unsigned index, const std::string& name)
{
    send("S\t" + std::to_string(index) + '\t' + escape(name));
}

void ZqTestEventWriter::OnMessage(int type, const std::string& text)
{
    send("M\t" + std::to_string(type) + '\t' + escape(text));
}

void ZqTestEventWriter::OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                                     const std::string& failure)
{
    char time[32];
    std::snprintf(time, sizeof time, "%.9g", seconds);
    send("E\t" + std::to_string(index) + '\t' + std::to_string(static_cast<int>(status)) + '\t' +
         std::to_string(outcome) + '\t' + time + '\t' + escape(failure));
}

void ZqTestEventWriter::OnClassError(const std::string& text)
{
    send("X\t" + escape(text));
}

void ZqTestEventWriter::OnClassEnd()
{
    send("F");
}

void ZqTestEventReader::Feed(const char* data, std::size_t size)
{
    m_pending.append(data, size);
    std::size_t start = 0;
    for (std::size_t end; (end = m_pending.find('\n', start)) != std::string::npos; start = end + 1)
        dispatch(m_pending.substr(start, end - start));
    m_pending.erase(0, start);
}

void ZqTestEventReader::dispatch(const std::string& line)
{
    const std::vector<std::string> f = splitFields(line);
    const std::string& kind = f[0];
    auto need = [&](std::size_t count)
    {
        if (f.size() != count)
            throw std::runtime_error(std::to_string(f.size()) + " fields");
    };
    try
    {
        if (kind == "O")
        {
            need(2);
            if (m_onOutputMark)
                m_onOutputMark(std::stoull(f[1]));
        }
        else if (kind == "P")
        {
            need(2);
            const unsigned long phase = toNumber(f[1]);
            if (phase > static_cast<unsigned long>(EZqTestPhase::eDestroy))
                throw std::runtime_error("bad phase");
            m_target.OnPhase(static_cast<EZqTestPhase>(phase));
        }
        else if (kind == "S")
        {
            need(3);
            m_target.OnSubtestStart(static_cast<unsigned>(toNumber(f[1])), f[2]);
        }
        else if (kind == "M")
        {
            need(3);
            m_target.OnMessage(static_cast<int>(toNumber(f[1])), f[2]);
        }
        else if (kind == "E")
        {
            need(6);
            const unsigned long status = toNumber(f[2]);
            if (status > static_cast<unsigned long>(EZqTestStatus::eSkipped))
                throw std::runtime_error("bad status");
            m_target.OnSubtestEnd(static_cast<unsigned>(toNumber(f[1])), static_cast<EZqTestStatus>(status),
                                  static_cast<int>(toNumber(f[3])), std::stod(f[4]), f[5]);
        }
        else if (kind == "X")
        {
            need(2);
            m_target.OnClassError(f[1]);
        }
        else if (kind == "F")
        {
            need(1);
            m_target.OnClassEnd();
        }
        else
            throw std::runtime_error("unknown event");
    }
    catch (const std::exception& e)
    {
        // Quoted in part: a garbled stream may hold a line of any length.
        const std::string shown = line.size() > 80 ? line.substr(0, 80) + "..." : line;
        throw std::runtime_error("malformed event '" + shown + "' (" + e.what() + ")");
    }
}
