#pragma once

namespace zor::cli {

/// The page of `report/`, with its style and scripts; `kReportData` stands where its data belong.
extern const char kReportTemplate[];
inline constexpr char kReportData[] = "REPORT_DATA";

}  // namespace zor::cli
