-- Order's members are inserted out of their order; Gone is a tombstone
-- whose member rows stayed.
INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT, DESCRIPTION) VALUES
('S1', 'Order', 0, 'an order'), ('S2', 'Address', 3, NULL), ('S3', 'Gone', 4, 'x');

INSERT INTO DVBT.DATA_STRUCTURE_MBR (MEMBER, DSID, SEQUENCE_NO, TYPE_DS, DATA_TYPE,
ARRAY_SIZE, LENGTH, DESCRIPTION, DOCUMENTATION) VALUES
('Lines', 'S1', 4, NULL, 6, 20, 8, 'the lines', NULL),
('Number', 'S1', 1, NULL, 5, NULL, 4, NULL, 'docs'),
('ShipTo', 'S1', 3, 'S2', 7, NULL, NULL, NULL, NULL),
('Note', 'S1', 2, NULL, 1, NULL, NULL, NULL, NULL),
('Ghost', 'S1', 5, 'NOWHERE', 7, 2, NULL, NULL, NULL),
('Flag', 'S1', 6, NULL, 3, NULL, NULL, NULL, NULL),
('Odd', 'S1', 7, NULL, 9, NULL, NULL, NULL, NULL),
('Street', 'S2', 1, NULL, 1, NULL, NULL, NULL, NULL),
('Left', 'S3', 1, NULL, 1, NULL, NULL, NULL, NULL);
