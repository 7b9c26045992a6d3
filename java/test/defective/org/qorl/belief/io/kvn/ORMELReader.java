package org.qorl.belief.io.kvn;

/**
 * A host class that lacks debugLoadNode, a method that the library never calls. The library must
 * refuse it all the same. Has the name of the real class, since the native methods are bound to it.
 */
public class ORMELReader {
    /** See the real class. */
    public native int loadKVN(String fileName, int fileFormat) throws Exception;

    void loadNode(String name, String identifier, Object[] outcomes, int[] record, String[] parents,
            double[] numbers, int[] strengths, String[] keys, String[] values) {}

    void loadSubmodel(int handle, String name, int centerX, int centerY, int[] children) {}

    void loadChildOfRootSubmodels(int[] handles, String[] names, int[] xs, int[] ys) {}

    void putNetworkParameter(Object key, Object value) {}

    void putNetworkParameter(Object key, int value) {}

    /** Arguments: the library, a network file. */
    public static void main(String[] arguments) {
        System.load(arguments[0]);
        try {
            new ORMELReader().loadKVN(arguments[1], 0);
            System.err.println("not refused");
        } catch (Exception refused) {
            if (refused.getClass() == Exception.class && refused.getMessage().equals(
                    "C++ failed to find expected interface to class ORMELReader.")) {
                System.out.println("refused as expected");
                return;
            }
            System.err.println("another exception: " + refused);
        }
        System.exit(1);
    }
}
