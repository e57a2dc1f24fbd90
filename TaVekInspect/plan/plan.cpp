#include "TaVekInspect/plan/plan.h"

#include "TaVekInspect/model/upgrade.h"
#include "TaVekInspect/plan/archive_planner.h"
#include "TaVekInspect/plan/quiet.h"
#include "TaVekUtil/batch/run.h"
#include "TaVekUtil/batch/stock_packages.h"
#include "platform/xml/xml.h"

namespace {

/// Runs `step`; what it raises becomes an error of the plan.
template <typename Step>
bool attempt(Plan& plan, Step step) {
    try {
        step();
        return true;
    } catch (const Ta::Exception& exception) {
        addError(plan.findings, reasonOf(exception, plan.configuration));
        return false;
    }
}

/// Each list is read even when another cannot be.
void readConfiguration(zHandle document, BuildConfig& config, Plan& plan) {
    const Quiet quiet;
    attempt(plan, [&] { TaVekUtil_Read_OutputPrefix(document, config); });
    const bool isRead = attempt(plan, [&] { TaVekUtil_Read_StockPackages(document, config); });
    if (config.stockPackages.empty()) TaVekUtil_FindStockPackages(config.stockPackages);
    if (isRead && config.stockPackages.empty()) {
        addError(plan.findings,
                 "there are no archives to process: the configuration names none, and no stock "
                 "archives are installed");
    }
    attempt(plan, [&] { TaVekUtil_Read_VekPkgsToLoad(document, config); });
    attempt(plan, [&] { TaVekUtil_Read_VekPkgsToRemove(document, config); });
}

bool loadConfiguration(const std::string& name, BuildConfig& config, Plan& plan) {
    Ta::Object<void*> document;
    const bool isLoaded = attempt(plan, [&] {
        const Ta::PathText path = TaVekUtil_ConfigPath(name.c_str());
        Ta::Check(zXml_Load(document.out(), path.c_str(), nullptr), "TaVekInspect");
    });
    if (isLoaded) readConfiguration(document.get(), config, plan);
    return isLoaded;
}

/// The first failure ends the run: what comes behind it is not reached.
void markNotReached(Plan& plan) {
    using Outcome = PlannedArchive::Outcome;
    bool isOver = countOf(plan.findings, Finding::Severity::error) > 0;
    for (PlannedArchive& archive : plan.archives) {
        if (isOver) archive.outcome = Outcome::notReached;
        if (archive.outcome == Outcome::failed) isOver = true;
    }
}

}  // namespace

std::size_t Plan::countOf(Finding::Severity severity) const {
    std::size_t count = ::countOf(findings, severity);
    for (const PlannedArchive& archive : archives) count += ::countOf(archive.findings, severity);
    return count;
}

Plan makePlan(const std::string& configuration, const std::string& platform, const Progress& progress) {
    Plan plan;
    plan.configuration = configuration;
    plan.platform = platform;
    BuildConfig config;
    static_cast<void>(zStrCopy(config.platform.data(), config.platform.capacity(), platform.c_str()));
    if (!loadConfiguration(configuration, config, plan)) return plan;

    const TemporaryDirectory scratch;
    const std::size_t steps = config.vekPkgsToLoad.size() + config.stockPackages.size();
    std::size_t done = 0;
    PackagePlanner packages(platform, scratch, plan);
    for (const std::string& entry : config.vekPkgsToLoad) {
        progress(done++, steps);
        packages.load(entry);
    }
    ArchivePlanner archives(config, packages, scratch);
    for (const std::string& path : config.stockPackages) {
        progress(done++, steps);
        plan.archives.push_back(archives.plan(path));
    }
    progress(done, steps);
    for (const AddonPackage& package : packages.packages()) {
        if (!archives.isInstalled(package.name.c_str())) {
            addWarning(plan.findings,
                       std::string("package ") + package.name.c_str() + " goes into no archive");
        }
    }
    markNotReached(plan);
    return plan;
}
