-- What the pointer shows of a component: its parameters, in order.
return { gate_valve = { "DN", "P1" }, elbow_90 = { "P1", "P2" }, other = { "NAME" } }
