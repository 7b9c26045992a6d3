/**
 * A Bayesian network as values: what a host was told by the engine, independent of the engine. All
 * of it is immutable; an edit makes a new value.
 */
package org.qorl.belief.model;
