// Gives this process a mount namespace with a /usr of its own.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// Moves this process into a mount namespace in which /usr is a scratch file system with all entries of the
/// machine's /usr except "tavrin". Works as root and, where the kernel allows user namespaces, as an ordinary
/// user. Returns an empty string, or what was refused; the process may then have moved in part.
QString enterNamespaceWithOwnUsr();

/// Drops the privileges that a user namespace gives an ordinary user, such as writing to files whose mode
/// forbids it. Nothing can be mounted afterwards. Root stays root.
void giveUpNamespaceRights();

/// Makes the directory or file `source` appear at `target` too. Returns an empty string, or what went wrong.
QString bindMount(const QString& source, const QString& target);
