package org.qorl.belief.model;

import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Optional;

/**
 * A Bayesian network: its properties, the tree of submodels that groups its nodes, and the nodes.
 *
 * @param properties user properties in the order of the file; a value may be null
 * @param submodels the tree depth first, the root first
 * @param nodes by ascending handle of the engine; parents may come after their children
 */
public record Network(Map<String, String> properties, List<Submodel> submodels, List<Node> nodes) {

    /** Handle of the root of the tree of submodels in every network. */
    public static final int ROOT_SUBMODEL = 16384;

    // Makes private copies of the collections.
    public Network {
        properties = Node.copyOf(properties);
        submodels = List.copyOf(submodels);
        nodes = List.copyOf(nodes);
    }

    /**
     * The node with an identifier.
     *
     * @param identifier what to look for, exactly
     * @return the node, if there is one
     */
    public Optional<Node> node(String identifier) {
        return nodes.stream().filter(node -> node.identifier().equals(identifier)).findFirst();
    }

    /**
     * The submodel with a handle.
     *
     * @param handle as in {@link Node#submodel()} and {@link Submodel#children()}
     * @return the submodel, if there is one
     */
    public Optional<Submodel> submodel(int handle) {
        return submodels.stream().filter(submodel -> submodel.handle() == handle).findFirst();
    }

    /**
     * This network with one node replaced.
     *
     * @param edited takes the place of the node that has its identifier
     * @return a new network
     * @throws IllegalArgumentException if no node has this identifier
     */
    public Network withNode(Node edited) {
        List<Node> changed = new ArrayList<>(nodes);
        for (int i = 0; i < changed.size(); i++) {
            if (changed.get(i).identifier().equals(edited.identifier())) {
                changed.set(i, edited);
                return new Network(properties, submodels, changed);
            }
        }
        throw new IllegalArgumentException("No node has the identifier " + edited.identifier());
    }

    /**
     * This network with other user properties.
     *
     * @param changed all properties of the new network
     * @return a new network
     */
    public Network withProperties(Map<String, String> changed) {
        return new Network(changed, submodels, nodes);
    }
}
