// A mount namespace for this process, with a /usr of its own.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// Moves this process into a mount namespace in which /usr is a scratch file system with the entries of the
/// machine's /usr in it, all but "tavrin". Works as root and, where the kernel allows user namespaces, as an
/// ordinary user. Returns an empty string, or what was refused; then the process may be half on its way.
QString enterNamespaceWithOwnUsr();

/// Gives up what an ordinary user may do in a user namespace and not outside of it, such as to write to files
/// whose mode forbids it. Nothing can be mounted afterwards. Root stays root.
void giveUpNamespaceRights();

/// Shows the directory or file `source` at `target` too. Returns an empty string, or what went wrong.
QString bindMount(const QString& source, const QString& target);
