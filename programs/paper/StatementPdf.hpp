// SPDX-License-Identifier: MIT
#pragma once

/// StatementPdf: a statement as a PDF document.
///
///     const std::string pdf = paper::pdfOf(statement, paper::PaperSize::a4());
///
/// The document holds the fonts it needs and no time of its making: the same statement on the same computer gives the same bytes.

#include "paper/PaperSize.hpp"
#include "paper/PrintedStatement.hpp"

#include <stdexcept>
#include <string>

namespace estatebook::paper {

/// Why nothing can be set, and what to do.
class PaperError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The bytes of the document. Linear in the texts. Throws PaperError when there is no font.
[[nodiscard]] std::string pdfOf(const PrintedStatement& statement, PaperSize size);

} // namespace estatebook::paper
