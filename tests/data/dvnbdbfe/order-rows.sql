-- The rows of the process "Order" (O) with everything a diagram holds, in
-- an order other than the one the load gives.
-- Activities: Zeta first in the table; Outer > Inner > Deep are blocks three deep.
INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK, ACTIVITY_KIND, EXIT_CONDITION, START_CONDITION,
EXIT_COND_XPOS, EXIT_COND_YPOS, XPOS, YPOS) VALUES
('Z', 'Zeta', 'O', NULL, 1, 'RC = 0', 2, 5, 6, 10, 20),
('A', 'Alpha', 'O', NULL, 2, 'RC > 1', 1, 7, NULL, NULL, NULL),
('M', 'Mid', 'O', NULL, 3, NULL, 7, NULL, NULL, NULL, NULL),
('B', 'Bundle', 'O', NULL, 5, NULL, 1, NULL, NULL, NULL, NULL),
('BP', 'Pattern', 'O', 'B', 2, NULL, 1, NULL, NULL, NULL, NULL),
('E', 'Empty', 'O', NULL, 5, NULL, 1, NULL, NULL, NULL, NULL),
('OB', 'Outer', 'O', NULL, 4, NULL, 1, NULL, NULL, NULL, NULL),
('IB', 'Inner', 'O', 'OB', 4, NULL, 1, NULL, NULL, NULL, NULL),
('DB', 'Deep', 'O', 'IB', 4, NULL, 1, NULL, NULL, NULL, NULL),
('DA', 'Act', 'O', 'DB', 2, NULL, 1, NULL, NULL, NULL, NULL),
('IA', 'Act', 'O', 'IB', 2, NULL, 1, NULL, NULL, NULL, NULL);

INSERT INTO DVBT.ACTIVITY_EXTENT (AID, START_OPTION, EXIT_OPTION, PRIO_FROM_INPUT, PRIORITY,
FIRST_NOT_TARGET, NOTIFICATION_INTVL, DONE_BY, STARTER_OF_AID, CHECKOUT_POSSIBLE) VALUES
-- exit option 1 drops the condition; priority from input wins; notify 5 without a person goes
('Z', 1, 1, 1, 5, 4, 60, 8, 'IA', 1),
-- notify 1 without a duration goes; done by 12 leaves DoneBy empty
('A', 2, 2, 0, 7, 1, NULL, 12, NULL, 0),
-- done by 3 without rows: no AssignType
('M', 2, 2, 0, NULL, NULL, NULL, 3, NULL, NULL),
('BP', 1, 2, 0, NULL, NULL, NULL, 4, NULL, NULL);

INSERT INTO DVBT.PROGRAM_ACTIVITY (AID, PROGRAM_ID, PE_SERVER, SYNCHRONIZATION) VALUES
('Z', 'PRG1', 'SRV1', 2);

INSERT INTO DVBT.BUNDLE_ACTIVITY (AID, PATTERN_ACTIVITY, RESTART_OPTION, PROMPT_FOR_PLANG,
INSTANTIATION_FLD, NMBR_OF_INSTANCES) VALUES ('B', 'BP', 1, 0, 'Items', 3);

INSERT INTO DVBT.ACT_CONTAINER (AID, INPUT_OR_OUTPUT, DOTTED_NAME, INITIAL_VALUE) VALUES
('A', 1, 'b', '2'), ('A', 1, 'a', '9'), ('A', 2, 'out', '1');

INSERT INTO DVBT.SINK (SINK_ID, SINK_NUMBER, PID, BLOCK_AID) VALUES ('K2', 2, 'O', NULL),
('K1', 1, 'O', NULL);

INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID, XPOS) VALUES
('S10', 10, 'O', NULL, 1), ('S3', 3, 'O', NULL, 2), ('S9', 9, 'O', 'OB', 3);

-- A -> Z with a condition; Z -> A of type 2 keeps none; A -> gone and
-- A -> Inner's Act (another diagram) do not load.
INSERT INTO DVBT.CONTROL_CONNECTOR (PID, FROM_ACTIVITY, TO_ACTIVITY, INSIDE_BLOCK, TYPE, COND_XPOS,
COND_YPOS, TRANSITION_COND) VALUES
('O', 'Z', 'A', NULL, 2, NULL, NULL, 'never'),
('O', 'A', 'Z', NULL, 1, 4, NULL, 'RC = 1'),
('O', 'A', 'GONE', NULL, 1, NULL, NULL, NULL),
('O', 'A', 'IA', NULL, 1, NULL, NULL, NULL);

INSERT INTO DVBT.CONTROL_BENDPOINT (PID, FROM_ACTIVITY, TO_ACTIVITY, SEQUENCENO, XPOS, YPOS) VALUES
('O', 'A', 'Z', 2, 20, 21), ('O', 'A', 'Z', 1, 10, 11), ('O', 'Z', 'A', 1, 30, 31);

INSERT INTO DVBT.DATA_CONNECTOR (PID, DCID, INSIDE_BLOCK, FROM_ACTIVITY, TO_ACTIVITY, FROM_SOURCE,
TO_SINK, DIRECTION) VALUES
('O', 'D1', NULL, NULL, 'A', 'S3', NULL, 2),
('O', 'D2', NULL, 'A', 'A', NULL, NULL, 1),
('O', 'D3', NULL, 'Z', 'Z', NULL, NULL, 2),
('O', 'D4', NULL, 'Z', NULL, NULL, 'K1', NULL),
('O', 'D5', NULL, 'Z', NULL, NULL, 'NOSINK', NULL);

INSERT INTO DVBT.DATA_BENDPOINT (DCID, SEQUENCENO, XPOS, YPOS) VALUES
('D1', 3, 3, 3), ('D1', 1, 1, 1), ('D1', 2, 2, 2);

INSERT INTO DVBT.DATA_MAP (DCID, FROM_MEMBER, TO_MEMBER) VALUES
('D1', 'y', 'b'), ('D1', 'x', 'c'), ('D1', 'x', 'a');

INSERT INTO DVBT.TEXT_ANNOTATION (ANNOTATION_ID, NAME, PID, INSIDE_BLOCK, ANNOTATION_TEXT, TEXT_FONT)
VALUES ('T2', 'Later', 'O', NULL, 'second', 'Arial'), ('T1', 'Early', 'O', NULL, 'first', NULL),
('T3', 'InBlock', 'O', 'IB', 'inner', NULL);
