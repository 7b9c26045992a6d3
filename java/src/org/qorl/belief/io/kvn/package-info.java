/** Reading and rewriting of network files through the native engine. */
package org.qorl.belief.io.kvn;
