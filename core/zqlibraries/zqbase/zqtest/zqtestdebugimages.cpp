#include "zqbase/zqtest/zqtestdebugimages.h"

#include "zqbase/zqtest/zqtestreports.h"

#include <cstdio>
#include <filesystem>

namespace
{
const std::string kPrefix = "Debug-Bilder View '";

// Splits "Referenz a | Bild b | Differenz c" into the three files.
void readFiles(const std::string& list, ZqTestDebugImages::SView& view)
{
    std::size_t start = 0;
    while (start <= list.size())
    {
        std::size_t end = list.find(" | ", start);
        if (end == std::string::npos)
            end = list.size();
        const std::string part = list.substr(start, end - start);
        for (auto [label, target] :
             {std::pair{"Referenz ", &view.reference}, std::pair{"Bild ", &view.render},
              std::pair{"Differenz ", &view.difference}})
            if (part.rfind(label, 0) == 0)
                *target = part.substr(std::string(label).size());
        start = end + 3;
    }
}

std::string cell(const char* title, const std::string& file)
{
    if (file.empty())
        return std::string("<td><h3>") + title + "</h3><p>keine</p></td>";
    const std::string uri = ZqTestReports::XmlEscape(ZqTestDebugImages::FileUri(file));
    return std::string("<td><h3>") + title + "</h3><a href=\"" + uri + "\"><img src=\"" + uri + "\" alt=\"" +
           ZqTestReports::XmlEscape(file) + "\"></a></td>";
}
} // namespace

std::vector<ZqTestDebugImages::SView> ZqTestDebugImages::Collect(const ZqRunRecord& run)
{
    std::vector<SView> views;
    for (const ZqClassRecord& record : run.classes)
        for (const ZqSubtestRecord& subtest : record.subtests)
        {
            if (!subtest.IsFailure())
                continue;
            for (const ZqTestMessage& message : subtest.messages)
            {
                const std::size_t end = message.text.find("': ", kPrefix.size());
                if (message.text.rfind(kPrefix, 0) != 0 || end == std::string::npos)
                    continue;
                SView view;
                view.test = record.name + "." + subtest.name;
                view.view = message.text.substr(kPrefix.size(), end - kPrefix.size());
                readFiles(message.text.substr(end + 3), view);
                const std::string about = "View '" + view.view + "'";
                for (const ZqTestMessage& other : subtest.messages)
                    if (&other != &message && other.text.find(about) != std::string::npos &&
                        other.text.rfind(kPrefix, 0) != 0)
                        view.notes.push_back(other.text);
                views.push_back(std::move(view));
            }
        }
    return views;
}

std::string ZqTestDebugImages::ToHtml(const std::vector<SView>& views)
{
    std::string html = "<!DOCTYPE html>\n<html lang=\"de\"><head><meta charset=\"utf-8\">"
                       "<title>zqtest: Debug-Bilder</title><style>"
                       "body{font-family:sans-serif;margin:1em;background:#f4f4f4}"
                       "table{width:100%;table-layout:fixed;border-spacing:8px}"
                       "td{vertical-align:top;background:#fff;padding:4px}"
                       "img{width:100%;image-rendering:pixelated;background:repeating-conic-gradient("
                       "#ccc 0 25%,#fff 0 50%) 0 0/16px 16px}"
                       "h3{margin:0 0 4px 0;font-size:90%}</style></head><body>\n"
                       "<h1>Fehlgeschlagene Views</h1>\n";
    for (const SView& view : views)
    {
        html += "<h2>" + ZqTestReports::XmlEscape(view.test) + " &ndash; View '" +
                ZqTestReports::XmlEscape(view.view) + "'</h2>\n";
        for (const std::string& note : view.notes)
            html += "<p>" + ZqTestReports::XmlEscape(note) + "</p>\n";
        html += "<table><tr>" + cell("Referenz", view.reference) + cell("Bild", view.render) +
                cell("Differenz (x8)", view.difference) + "</tr></table>\n";
    }
    return html + "</body></html>\n";
}

std::string ZqTestDebugImages::FileUri(const std::string& path)
{
    std::string uri = "file://";
    for (unsigned char c : std::filesystem::absolute(path).string())
    {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '/' ||
            c == '-' || c == '.' || c == '_' || c == '~')
            uri += char(c);
        else
        {
            char escaped[4];
            std::snprintf(escaped, sizeof(escaped), "%%%02X", c);
            uri += escaped;
        }
    }
    return uri;
}
