// What a panel writes down in memory that outlives it.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_PROCESS_CUTS_SHARED_LOG_H
#define TESTS_POWER_CUT_PROCESS_CUTS_SHARED_LOG_H

#include "tests/power_cut/support/load.h"

#include <atomic>
#include <chrono>

/// Raw bytes of the three areas in their order.
using AreaBytes = std::array<unsigned char, 65536 + 2 * 131072>;
void copyAreas(const MemoryAreas& from, AreaBytes& to);
void copyAreas(const AreaBytes& from, MemoryAreas& to);
Images imagesOf(const AreaBytes& bytes);

/// One life of a panel. It may be cut off at any instruction: what counts is written before its count is.
struct SharedLog
{
    static constexpr int mostChanges = 8192;

    std::atomic<bool> started; ///< the start-up is complete; `restored` and `startTime` are filled
    std::atomic<int> given;    ///< of `changes`
    std::atomic<int> kept;     ///< of `changes`
    std::atomic<int> syncs;
    std::atomic<int> saveSteps; ///< one when a save begins and one when it is complete; odd: one is under way
    AreaBytes restored;
    std::chrono::nanoseconds startTime; ///< from the fork until `restored` was filled
    std::array<Change, mostChanges> changes;
    std::array<AreaBytes, 2> saves;

    int completedSaves() const { return saveSteps / 2; }
    bool saving() const { return saveSteps % 2 != 0; }
    /// The areas as they were at that save, counted from 0; only the last two are there.
    AreaBytes& save(int number) { return saves[static_cast<std::size_t>(number % 2)]; }
};

/// Writes into a shared log.
class SharedLogWriter : public LoadLog
{
public:
    explicit SharedLogWriter(SharedLog& log) : log(log) {}

    /// No room for another step.
    bool isFull() const { return log.given + 10 > SharedLog::mostChanges; }

    void give(const Change& change) override;
    void keep(const Change& change) override;
    void beginSave(const MemoryAreas& areas) override;
    void completeSave() override;
    void sync() override;

private:
    SharedLog& log;
};

#endif
