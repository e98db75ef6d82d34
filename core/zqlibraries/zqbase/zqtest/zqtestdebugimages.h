#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestrecord.h"

#include <string>
#include <vector>

// The page of --debug-images: for every view of a failing subtest that left debug images, its
// reference, render and difference side by side. A render test announces them in one information
// message, "Debug-Bilder View '<view>': Referenz <file> | Bild <file> | Differenz <file>" (the
// reference and the difference only when they exist); the runner reads those messages from the
// run's records, so it works the same for isolated and in-process runs.
class ZQBASE_API ZqTestDebugImages
{
public:
    struct SView
    {
        std::string test; // "Class.Subtest"
        std::string view;
        std::string reference, render, difference; // files; empty when there is none
        std::vector<std::string> notes;            // the subtest's messages about this view
    };

    static constexpr const char* kFileName = "zqtest-debug-images.html";

    // The announced views of the failing subtests, in run order.
    static std::vector<SView> Collect(const ZqRunRecord& run);
    static std::string ToHtml(const std::vector<SView>& views);
    // "file://" and the absolute path, with everything but letters, digits and "/-._~" escaped.
    static std::string FileUri(const std::string& path);
};
