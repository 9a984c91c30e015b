// Carries out commands on a simulated panel and tells the user what happened.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/panel.h"
#include "tools/panel_simulator/command.h"
#include "tools/panel_simulator/retention_files_on_disk.h"

#include <functional>
#include <memory>
#include <ostream>

/// The outcome of a command.
struct CommandResult
{
    bool goOn = true; ///< false when the panel is to stop
    QString failure;  ///< what an expectation found instead; empty for none
};

/// A panel that can be restarted.
class Session
{
public:
    /// The caller owns the library and the project. `directory` is the folder that really contains the
    /// retention files. Call start() next.
    Session(const ModuleLibrary& library, object* project, QString directory);

    /// Starts a panel, and reports the mode on `out` and files that cannot be kept on `errors`.
    void start(std::ostream& out, std::ostream& errors);
    /// Reports on `out` what stopping the panel loses.
    void stop(std::ostream& out) const;
    /// Carries out `command`, with its answer on `out`. PowerCut does not return; Live, which is handled
    /// elsewhere, does nothing.
    CommandResult run(const Command& command, std::ostream& out, std::ostream& errors);

    /// Lets time pass for the panel. Returns what a timed save could not save, and later that it saved again;
    /// empty when there is nothing new.
    QString advance(long long elapsedMs);

    const Panel& panel() const { return *current; }
    /// Whole areas: cells of that area that changed since the last save. None in other modes.
    std::vector<int> unsaved(std::size_t area) const;
    bool savesWholeAreas() const { return current->model->retentionMode == 1; }

    /// Called during long commands: `done` of `all` changes are reported.
    std::function<void(int done, int all)> progress;

private:
    void set(const Command& command, std::ostream& out);
    void cycle(std::ostream& out);
    /// The cells of an area that the module was told of but did not write, at least one, with the reasons.
    QString unwrittenText(const QString& area, const std::vector<int>& cells) const;
    /// Why an area's file was not written.
    QString whyNotWritten(std::size_t area) const;
    /// The areas that were not written since `before`, each with the reason; empty for none.
    QString notSavedSince(const WrittenBytes& before) const;
    void status(std::ostream& out) const;
    QString expect(const Command& command, std::ostream& out) const;
    /// Such as "2 cells: LW 5, RWI 7"; empty for none.
    QString unsavedText() const;

    const ModuleLibrary& library;
    object* project;
    QString directory;
    WriteCounter written; // declared before the panel, so that it sees the panel's files being opened
    int reported = 0;     ///< changes since the start
    int lost = 0;         ///< of these, not written
    QString notSaved;     ///< by the last timed save
    std::unique_ptr<Panel> current;
};

/// The chosen mode in words, with its number.
QString modeText(const ExtendFuncModelBase& model);
