#pragma once

#include <QString>

// The one check of a domain before it becomes a folder, an argument or a part of an address. Any thread.

/// Whether `domain` is a host name, and the same one for a file system, ssh, a shell and a browser: labels of
/// letters, digits, "-" and "_", none of them empty, 253 characters at most as DNS sees them. A name with
/// other letters counts where its international form is unambiguous.
[[nodiscard]] bool isPlainDomain(const QString& domain);

/// Whether `domain` is such a name, or one with a port behind it, as a web address may have.
[[nodiscard]] bool isPlainSite(const QString& domain);

/// A refused domain as a line of text: shortened, without control and format characters.
[[nodiscard]] QString printableDomain(const QString& domain);
