package org.qorl.belief.io.kvn;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import org.qorl.belief.model.Box;
import org.qorl.belief.model.Diagnosis;
import org.qorl.belief.model.Network;
import org.qorl.belief.model.Node;
import org.qorl.belief.model.Submodel;

/**
 * Reads network files with the native engine, and writes edits back into them.
 *
 * <p>{@link #read} and {@link #update} are what a program needs. Below them are the native methods,
 * whose names and signatures, like those of the callbacks, are fixed by the library: it looks all
 * callbacks up and refuses a class that lacks one, although it never calls three of them.
 *
 * <p>The engine has one state for the whole process and no lock. {@code read} and {@code update}
 * take turns, and refuse to be called from a callback; a program that calls the native methods itself
 * must see to both on its own. The engine keeps every network that it has read until the process ends,
 * so memory grows with each call.
 *
 * <p>Errors inside a text file cost the statement that they stand in, and the rest is read: no method
 * here tells of them. The command {@code ormel check} does.
 */
public class ORMELReader {
    /** The format is told by the extension of the file's name. */
    public static final int FORMAT_BY_EXTENSION = 0;
    /** The native text format, extension kvn. */
    public static final int FORMAT_KVN = 4;
    /** The native XML format, extension xkvn. */
    public static final int FORMAT_XKVN = 8;

    /** What {@link #loadKVN} answers on success: the handle of the root submodel. */
    public static final int LOADED = Network.ROOT_SUBMODEL;

    /** Integers in the record of a node in front of its faults. */
    private static final int RECORD_HEAD = 11;

    static {
        NativeLibrary.load();
    }

    /** Whether read or update is at work. A call in between would take the engine's state away. */
    private static boolean working;

    // What the callbacks of the load that is running have collected.
    private final Map<String, String> properties = new LinkedHashMap<>();
    private final List<Submodel> submodels = new ArrayList<>();
    private final List<Node> nodes = new ArrayList<>();

    /**
     * Makes a reader, which may be used any number of times.
     *
     * @throws UnsatisfiedLinkError if the native library can't be loaded, with the places tried; a
     *     second attempt in the same process gives a NoClassDefFoundError
     */
    public ORMELReader() {}

    /**
     * Reads a network file of the format that its extension tells.
     *
     * @param file the file
     * @return what is in it
     * @throws IOException if it can't be read, or holds nodes of a kind that hosts aren't told of
     */
    public Network read(Path file) throws IOException {
        return read(file, FORMAT_BY_EXTENSION);
    }

    /**
     * Reads a network file.
     *
     * @param file the file
     * @param format one of the format codes
     * @return what is in it
     * @throws IOException if it can't be read, or holds nodes of a kind that hosts aren't told of
     * @throws IllegalStateException if called from a callback
     */
    public Network read(Path file, int format) throws IOException {
        synchronized (ORMELReader.class) {
            startWork();
            properties.clear();
            submodels.clear();
            nodes.clear();
            int result;
            try {
                result = loadKVN(file.toString(), format);
            } catch (RuntimeException unexpected) {
                throw unexpected;
            } catch (Exception refused) {
                throw new IOException(file + ": " + refused.getMessage(), refused);
            } finally {
                working = false;
            }
            if (result != LOADED) {
                throw new IOException(file + ": the file can't be read, or its format isn't known");
            }
            return new Network(properties, submodels, nodes);
        }
    }

    /**
     * Writes a copy of a network file with edits: the numbers, user properties and diagnosis types
     * of {@code edited} go over those of the file, everything else comes through as it is. A
     * property that {@code edited} doesn't have stays in the file; one whose key is no identifier is
     * left out.
     *
     * @param input the file to take everything from
     * @param output the file to write; its extension tells the format
     * @param edited a network read from {@code input}, with edits
     * @throws IOException if a file can't be read or written, or lacks one of the nodes
     * @throws IllegalStateException if called from a callback
     */
    public void update(Path input, Path output, Network edited) throws IOException {
        List<Node> all = edited.nodes();
        boolean done;
        synchronized (ORMELReader.class) {
            startWork();
            try {
                done = updateKVN(
                        input.toString(), FORMAT_BY_EXTENSION,
                        output.toString(), FORMAT_BY_EXTENSION,
                        all.stream().map(Node::identifier).toArray(String[]::new),
                        all.stream().map(Node::numbers).toArray(double[][]::new),
                        keys(edited.properties()), values(edited.properties()),
                        all.stream().map(node -> keys(node.properties())).toArray(String[][]::new),
                        all.stream().map(node -> values(node.properties())).toArray(String[][]::new),
                        all.stream().map(node -> new int[] {node.diagnosis().type().ordinal()})
                                .toArray(int[][]::new));
            } catch (RuntimeException unexpected) {
                throw unexpected;
            } catch (Exception refused) {
                throw new IOException(refused.getMessage(), refused);
            } finally {
                working = false;
            }
        }
        if (!done) {
            throw new IOException(input + ": the file can't be read, or its format isn't known");
        }
    }

    /** The lock doesn't keep a callback out, which runs on the thread that has it. */
    private static void startWork() {
        if (working) {
            throw new IllegalStateException("read and update can't be called from a callback");
        }
        working = true;
    }

    private static String[] keys(Map<String, String> properties) {
        return properties.keySet().toArray(new String[0]);
    }

    private static String[] values(Map<String, String> properties) {
        return properties.values().toArray(new String[0]);
    }

    // --- Native methods. Those whose names end in W do the same on a state of their own.

    /**
     * Asks whether a feature is there.
     *
     * @param feature code of the feature; 8 is the native XML format
     * @return true
     */
    public native boolean librarySupports(int feature);

    /**
     * {@link #librarySupports} on the second state.
     *
     * @param feature code of the feature
     * @return true
     */
    public native boolean librarySupportsW(int feature);

    /**
     * Reads a file and calls the callbacks of this object with what is in it: first the properties
     * of the network, then the submodels depth first, then the nodes.
     *
     * @param fileName the file
     * @param fileFormat a format code; below 0 counts as 0
     * @return {@link #LOADED}, or -1 for a file that can't be read
     * @throws Exception for a syntax error ("KVN_SYNTAX_ERROR; " and the reason), a node of a kind
     *     that hosts aren't told of, or what a callback throws
     */
    public native int loadKVN(String fileName, int fileFormat) throws Exception;

    /**
     * {@link #loadKVN} on the second state.
     *
     * @param fileName the file
     * @param fileFormat a format code; below 0 counts as 0
     * @return {@link #LOADED}, or -1 for a file that can't be read
     * @throws Exception as {@link #loadKVN}
     */
    public native int loadKVNW(String fileName, int fileFormat) throws Exception;

    /**
     * Reads the input file, puts edits in, and writes the output file. Every array but those of the
     * network has one element for each identifier; null in place of an element, or of all, leaves
     * that part alone.
     *
     * @param inputFile the file to read
     * @param inputFormat a format code; below 0 counts as 0
     * @param outputFile the file to write
     * @param outputFormat a format code
     * @param nodeIds identifiers of the nodes to edit
     * @param probabilities a {@code double[]} for each node, as loadNode brings it
     * @param networkKeys user properties of the network to set
     * @param networkValues their values
     * @param nodeKeys a {@code String[]} for each node: user properties to set
     * @param nodeValues a {@code String[]} for each node: their values
     * @param diagnosisTypes an {@code int[]} for each node, whose first element is its type
     * @return true if the output was written; false if the input can't be read
     * @throws Exception for unequal lengths, a syntax error, an unknown node, a failure to write
     */
    public native boolean updateKVN(String inputFile, int inputFormat, String outputFile,
            int outputFormat, String[] nodeIds, Object[] probabilities, String[] networkKeys,
            String[] networkValues, Object[] nodeKeys, Object[] nodeValues, Object[] diagnosisTypes)
            throws Exception;

    /**
     * {@link #updateKVN} on the second state.
     *
     * @param inputFile the file to read
     * @param inputFormat a format code; below 0 counts as 0
     * @param outputFile the file to write
     * @param outputFormat a format code
     * @param nodeIds identifiers of the nodes to edit
     * @param probabilities a {@code double[]} for each node
     * @param networkKeys user properties of the network to set
     * @param networkValues their values
     * @param nodeKeys a {@code String[]} for each node
     * @param nodeValues a {@code String[]} for each node
     * @param diagnosisTypes an {@code int[]} for each node
     * @return true if the output was written; false if the input can't be read
     * @throws Exception as {@link #updateKVN}
     */
    public native boolean updateKVNW(String inputFile, int inputFormat, String outputFile,
            int outputFormat, String[] nodeIds, Object[] probabilities, String[] networkKeys,
            String[] networkValues, Object[] nodeKeys, Object[] nodeValues, Object[] diagnosisTypes)
            throws Exception;

    /**
     * Prints on standard output how many nodes the network read last has.
     *
     * @return 0
     */
    public native int testJNI();

    /**
     * {@link #testJNI} on the second state.
     *
     * @return 0
     */
    public native int testJNIW();

    // --- Callbacks. An exception ends the load and leaves loadKVN.

    /**
     * Takes a node. Called once for each.
     *
     * @param name for people, may be null
     * @param identifier names it within the network
     * @param outcomes identifiers of its outcomes, Strings
     * @param record centre x and y, width, height; kind; diagnosis type, mandatory, ranked, default
     *     outcome; submodel; number of faults and the faults
     * @param parents identifiers of its parents
     * @param numbers its table, or the parameters of its gate
     * @param strengths orders of the parents' outcomes for a gate, else null
     * @param keys its user properties
     * @param values their values
     */
    protected void loadNode(String name, String identifier, Object[] outcomes, int[] record,
            String[] parents, double[] numbers, int[] strengths, String[] keys, String[] values) {
        List<Integer> faults = new ArrayList<>();
        for (int i = 0; i < record[RECORD_HEAD - 1]; i++) {
            faults.add(record[RECORD_HEAD + i]);
        }
        Map<String, String> own = new LinkedHashMap<>();
        for (int i = 0; i < keys.length; i++) {
            own.put(keys[i], values[i]);
        }
        nodes.add(new Node(
                identifier,
                name,
                new Box(record[0], record[1], record[2], record[3]),
                record[9],
                Node.Kind.values()[record[4]],
                Arrays.stream(outcomes).map(String.class::cast).toList(),
                List.of(parents),
                numbers,
                strengths == null ? new int[0] : strengths,
                new Diagnosis(Diagnosis.Type.values()[record[5]], record[6] != 0, record[7] != 0,
                        record[8], faults),
                own));
    }

    /**
     * Takes a submodel. Called once for each, the root first.
     *
     * @param handle its handle
     * @param name for people, may be null
     * @param centerX centre of its box
     * @param centerY centre of its box
     * @param children handles of the submodels directly below
     */
    protected void loadSubmodel(int handle, String name, int centerX, int centerY, int[] children) {
        submodels.add(new Submodel(handle, name, centerX, centerY,
                Arrays.stream(children).boxed().toList()));
    }

    /**
     * Takes a user property of the network. Called once for each.
     *
     * @param key the key, a String
     * @param value its value, a String or null
     */
    protected void putNetworkParameter(Object key, Object value) {
        properties.put((String) key, (String) value);
    }

    /**
     * Never called, but looked up.
     *
     * @param key the key, a String
     * @param value its value
     */
    protected void putNetworkParameter(Object key, int value) {
        throw new UnsupportedOperationException("putNetworkParameter(Object, int)");
    }

    /**
     * Never called, but looked up.
     *
     * @param handles handles of submodels
     * @param names their names
     * @param centersX centres of their boxes
     * @param centersY centres of their boxes
     */
    protected void loadChildOfRootSubmodels(int[] handles, String[] names, int[] centersX,
            int[] centersY) {
        throw new UnsupportedOperationException("loadChildOfRootSubmodels");
    }

    /**
     * Never called, but looked up.
     *
     * @param text a message
     */
    protected void debugLoadNode(String text) {
        throw new UnsupportedOperationException("debugLoadNode");
    }
}
