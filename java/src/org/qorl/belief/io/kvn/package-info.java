/**
 * Reading and rewriting of network files through the native engine.
 *
 * <pre>{@code
 * ORMELReader reader = new ORMELReader();
 * Network network = reader.read(Path.of("chest-clinic.kvn"));
 * Node smoking = network.node("Smoking").orElseThrow();
 * reader.update(Path.of("chest-clinic.kvn"), Path.of("edited.kvn"),
 *         network.withNode(smoking.withNumbers(0.3, 0.7)));
 * }</pre>
 *
 * <p>The native library is looked for in the system property {@code callormel.library} (a file or a
 * folder), then in the folders of {@code java.library.path}, then in the jar of these classes.
 */
package org.qorl.belief.io.kvn;
